#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ZR::test {

/// One captured frame, packed as U Y V Y.
struct Frame {
    unsigned int width = 0;
    unsigned int height = 0;
    std::vector<std::uint8_t> bytes;
};

/// What a frame of the simulated cameras says about itself.
struct Picture {
    int input = -1;      ///< the camera, counted from 0
    bool ntsc = false;   ///< the decoder's standard when the frame was taken
    int number = -1;     ///< of the frame since its stream's start, modulo 65536
    std::string defect;  ///< what is wrong with the picture; empty when nothing is
};

/// Reads the strip at the frame's top and compares the rest of the picture with what it says.
Picture pictureOf(const Frame& frame);

/// In words, as "input 2 NTSC 720x480"; the defect when there is one.
std::string shownBy(const Frame& frame);

}  // namespace ZR::test
