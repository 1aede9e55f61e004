#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ZR::test {

/// An input to start from: near what the kernel and the drivers send, so that mutations reach deep.
struct Seed {
    std::string name;
    std::string bytes;
};

struct FuzzTarget {
    std::string name;
    void (*check)(const std::uint8_t* data, std::size_t size);
    std::vector<Seed> seeds;
};

std::vector<FuzzTarget> fuzzTargets();

}  // namespace ZR::test
