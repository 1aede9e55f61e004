#pragma once

#include <cstddef>
#include <cstdint>

namespace ZR::test {

void checkLinkText(const std::uint8_t* data, std::size_t size);
void checkFormatText(const std::uint8_t* data, std::size_t size);

}  // namespace ZR::test
