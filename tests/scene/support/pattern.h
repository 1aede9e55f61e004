#pragma once

#include <array>
#include <cstdint>

namespace ZR::test {

/// One colour of the test picture.
struct PatternColour {
    std::uint8_t red, green, blue;
};

/// The quarters of the test picture: top left, top right, bottom left, bottom right. Each is another
/// one, so that a picture which is turned or mirrored shows it.
constexpr std::array<PatternColour, 4> patternQuarters = {
    {{220, 30, 30}, {30, 200, 30}, {30, 30, 220}, {220, 210, 30}}};

/// The square in the middle, a quarter as wide and high as the picture, is dark and bright in turn.
constexpr PatternColour patternDark = {20, 20, 20};
constexpr PatternColour patternBright = {235, 235, 235};
/// Number of pictures that each lasts.
constexpr int patternBlinkPictures = 5;

/// Paints the test picture into a frame of planar YUV with half the resolution for colours (I420).
/// @param planes   first byte of luma, blue and red difference
/// @param strides  bytes from line to line of each
/// @param width    pixels, even
/// @param height   pixels, even
/// @param number   of the picture, decides over the square in the middle
void paintPattern(const std::array<std::uint8_t*, 3>& planes, const std::array<int, 3>& strides,
                  int width, int height, int number);

}  // namespace ZR::test
