#include "tests/scene/support/pattern.h"

#include <cstddef>
#include <cstring>

namespace ZR::test {

namespace {

/// ITU-R BT.601 with the reduced range of values that video has.
std::array<std::uint8_t, 3> toYuv(PatternColour colour) {
    const int red = colour.red;
    const int green = colour.green;
    const int blue = colour.blue;
    return {static_cast<std::uint8_t>(16 + (66 * red + 129 * green + 25 * blue) / 256),
            static_cast<std::uint8_t>(128 + (-38 * red - 74 * green + 112 * blue) / 256),
            static_cast<std::uint8_t>(128 + (112 * red - 94 * green - 18 * blue) / 256)};
}

struct Area {
    int left, top, width, height;
};

void fill(const std::array<std::uint8_t*, 3>& planes, const std::array<int, 3>& strides, Area area,
          PatternColour colour) {
    const std::array<std::uint8_t, 3> values = toYuv(colour);
    for (std::size_t plane = 0; plane < planes.size(); ++plane) {
        const int part = plane == 0 ? 1 : 2;
        for (int line = area.top / part; line < (area.top + area.height) / part; ++line)
            std::memset(planes[plane] + std::ptrdiff_t{line} * strides[plane] + area.left / part,
                        values[plane], static_cast<std::size_t>(area.width / part));
    }
}

}  // namespace

void paintPattern(const std::array<std::uint8_t*, 3>& planes, const std::array<int, 3>& strides,
                  int width, int height, int number) {
    for (int quarter = 0; quarter < 4; ++quarter)
        fill(planes, strides,
             {quarter % 2 * width / 2, quarter / 2 * height / 2, width / 2, height / 2},
             patternQuarters[static_cast<std::size_t>(quarter)]);
    const bool isBright = number / patternBlinkPictures % 2 != 0;
    fill(planes, strides, {width * 3 / 8, height * 3 / 8, width / 4, height / 4},
         isBright ? patternBright : patternDark);
}

}  // namespace ZR::test
