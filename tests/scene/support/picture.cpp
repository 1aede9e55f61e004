#include "tests/scene/support/picture.h"

#include <QColor>
#include <cstdlib>

#include "tests/scene/support/pattern.h"
#include "tests/scene/support/scene_colours.h"

namespace ZR::test {

namespace {

/// Each channel may be this far off; the colours are further apart.
constexpr int tolerance = 50;

constexpr char const* names[] = {"Red",    "Green",    "Blue",  "Yellow", "Dark",
                                 "Bright", "WaitItem", "Scene", "Unknown"};

bool isNear(QRgb pixel, const PatternColour& colour) {
    return std::abs(qRed(pixel) - colour.red) <= tolerance &&
           std::abs(qGreen(pixel) - colour.green) <= tolerance &&
           std::abs(qBlue(pixel) - colour.blue) <= tolerance;
}

bool isOfPattern(const QImage& image, int x, int y) {
    return shownAt(image, {x, y}) <= Shown::Yellow;
}

}  // namespace

Quarters mirrored(const Quarters& quarters) {
    return {quarters[1], quarters[0], quarters[3], quarters[2]};
}

Quarters turned(const Quarters& quarters, int degrees) {
    Quarters result = quarters;
    for (int angle = 0; angle < degrees; angle += 90)
        result = {result[2], result[0], result[3], result[1]};
    return result;
}

Shown shownAt(const QImage& image, QPoint point) {
    if (!image.valid(point))
        return Shown::Unknown;
    const QRgb pixel = image.pixel(point);
    const PatternColour known[] = {patternQuarters[0], patternQuarters[1], patternQuarters[2],
                                   patternQuarters[3], patternDark,        patternBright,
                                   waitItemColour,     sceneColour};
    for (int i = 0; i < static_cast<int>(std::size(known)); ++i)
        if (isNear(pixel, known[i]))
            return static_cast<Shown>(i);
    return Shown::Unknown;
}

Quarters quartersOf(const QImage& image, const QRect& area) {
    const int left = area.left() + area.width() / 4;
    const int right = area.left() + area.width() * 3 / 4;
    const int top = area.top() + area.height() / 4;
    const int bottom = area.top() + area.height() * 3 / 4;
    return {shownAt(image, {left, top}), shownAt(image, {right, top}),
            shownAt(image, {left, bottom}), shownAt(image, {right, bottom})};
}

Shown middleOf(const QImage& image, const QRect& area) {
    return shownAt(image, area.center());
}

QRect pictureArea(const QImage& image) {
    QRect area;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (isOfPattern(image, x, y))
                area |= QRect(x, y, 1, 1);
    return area;
}

void PrintTo(Shown shown, std::ostream* out) {
    *out << names[static_cast<std::size_t>(shown)];
}

}  // namespace ZR::test
