#pragma once

#include <QImage>
#include <QRect>
#include <array>
#include <ostream>

namespace ZR::test {

/// What a pixel of a scene shows, with the tolerance that lossy encoding needs.
enum class Shown { Red, Green, Blue, Yellow, Dark, Bright, WaitItem, Scene, Unknown };

/// What the quarters of a picture show: top left, top right, bottom left, bottom right.
using Quarters = std::array<Shown, 4>;

/// The test picture as it is sent.
constexpr Quarters upright = {Shown::Red, Shown::Green, Shown::Blue, Shown::Yellow};
/// What every quarter shows while there is no picture.
constexpr Quarters waiting = {Shown::WaitItem, Shown::WaitItem, Shown::WaitItem, Shown::WaitItem};
/// What every quarter shows where there is neither.
constexpr Quarters onlyScene = {Shown::Scene, Shown::Scene, Shown::Scene, Shown::Scene};

/// The picture with left and right exchanged.
Quarters mirrored(const Quarters& quarters);
/// The picture turned clockwise.
/// @param degrees  a multiple of 90
Quarters turned(const Quarters& quarters, int degrees);

/// What one pixel shows; Unknown outside of the image.
Shown shownAt(const QImage& image, QPoint point);
/// What the middles of an area's quarters show.
Quarters quartersOf(const QImage& image, const QRect& area);
/// What the middle of an area shows: of the test picture the square that is dark and bright in turn.
Shown middleOf(const QImage& image, const QRect& area);
/// The smallest area that holds every pixel of the test picture's four colours; empty without one.
QRect pictureArea(const QImage& image);

void PrintTo(Shown shown, std::ostream* out);

}  // namespace ZR::test
