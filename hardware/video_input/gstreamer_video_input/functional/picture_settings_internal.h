#pragma once

#include <QtGlobal>
#include <limits>

namespace ZR {

/// Size of an item in whole pixels of the scene.
struct ItemSize {
    int width;
    int height;
};

/// An angle as one of 0 to 359 degrees: -90 is 270, 450 is 90.
constexpr int normalisedDegrees(int degrees) {
    const int remainder = degrees % 360;
    return remainder < 0 ? remainder + 360 : remainder;
}

/// A coordinate cut to a whole number; what an `int` cannot hold becomes the nearest it can, what is
/// no number 0.
constexpr int wholePixels(qreal value) {
    constexpr qreal lowest = std::numeric_limits<int>::min();
    constexpr qreal highest = std::numeric_limits<int>::max();
    if (!(value == value))
        return 0;
    if (value <= lowest)
        return std::numeric_limits<int>::min();
    if (value >= highest)
        return std::numeric_limits<int>::max();
    return static_cast<int>(value);
}

/// The size of a video item that fills its host: turned by a quarter its width is the host's height.
constexpr ItemSize fillingSize(qreal hostWidth, qreal hostHeight, int degrees) {
    const bool quarterTurn = degrees == 90 || degrees == 270;
    return quarterTurn ? ItemSize{wholePixels(hostHeight), wholePixels(hostWidth)}
                       : ItemSize{wholePixels(hostWidth), wholePixels(hostHeight)};
}

}  // namespace ZR
