#include "camera_scene.h"

#include <QElapsedTimer>
#include <array>
#include <cstdlib>
#include <string>

#include "camera_picture.h"
#include "tests/scene/support/scene_colours.h"

namespace ZR::test {
namespace {

// One frame a second: the software renderer of an emulated processor is done with it before the next.
constexpr char framesPerDelivery[] = "25";
constexpr double limit = 180;         // s
constexpr qint64 betweenLooks = 250;  // ms

// The picture's grid, and a pair of pixels for each of its cells.
constexpr int cells = 24;
constexpr int width = 2 * cells;

constexpr int tolerance = 40;

struct PureColour {
    int red, green, blue;
    std::array<std::uint8_t, 3> yuv;
};

/// What the cameras' values become on a screen.
constexpr std::array<PureColour, 7> pureColours = {{{255, 255, 255, {235, 128, 128}},
                                                    {0, 0, 0, {16, 128, 128}},
                                                    {255, 0, 0, {81, 90, 240}},
                                                    {0, 255, 0, {145, 54, 34}},
                                                    {0, 0, 255, {41, 240, 110}},
                                                    {255, 255, 0, {210, 16, 146}},
                                                    {255, 0, 255, {106, 202, 222}}}};

bool isNear(const QColor& colour, int red, int green, int blue) {
    return std::abs(colour.red() - red) <= tolerance &&
           std::abs(colour.green() - green) <= tolerance &&
           std::abs(colour.blue() - blue) <= tolerance;
}

/// The camera's values of a colour; zeros, which no camera sends, of one that is none of the pure.
std::array<std::uint8_t, 3> cameraValuesOf(const QColor& colour) {
    for (const PureColour& pure : pureColours)
        if (isNear(colour, pure.red, pure.green, pure.blue))
            return pure.yuv;
    return {};
}

QColor colourAt(const QImage& image, const QRect& area, int column, int row) {
    const QPoint middle(area.left() + (2 * column + 1) * area.width() / (2 * cells),
                        area.top() + (2 * row + 1) * area.height() / (2 * cells));
    return image.valid(middle) ? image.pixelColor(middle) : QColor();
}

/// The middles of the cells, as a small frame of the camera.
Frame frameIn(const QImage& image, const QRect& area) {
    Frame frame;
    frame.width = width;
    frame.height = cells;
    for (int row = 0; row < cells; ++row) {
        for (int column = 0; column < cells; ++column) {
            const auto [y, u, v] = cameraValuesOf(colourAt(image, area, column, row));
            frame.bytes.insert(frame.bytes.end(), {u, y, v, y});
        }
    }
    return frame;
}

}  // namespace

std::string shownIn(const QImage& image, const QRect& area) {
    const PatternColour wait = waitItemColour;
    if (isNear(image.pixelColor(area.center()), wait.red, wait.green, wait.blue))
        return "the wait item";
    const Picture picture = pictureOf(frameIn(image, area));
    if (!picture.defect.empty())
        return picture.defect;
    return "input " + std::to_string(picture.input) + (picture.ntsc ? " NTSC" : " PAL");
}

void CameraScene::SetUp() {
    CameraBoard::SetUp();
    for (const int input : {0, 1}) {
        turn(captureKnobs(input) + "/every", framesPerDelivery);
        turn(captureKnobs(input) + "/present", "1");
    }
    for (const int input : {0, 1, 2})
        turn(decoderKnobs(input) + "/camera." + std::to_string(input) + "/signal", "1");
    scene_ = std::make_unique<VideoScene>();
    const QSize size = left.united(right).size();
    scene_->window().resize(size);
    ASSERT_TRUE(eventually([&] { return scene_->grab().size() == size; }));
}

void CameraScene::TearDown() {
    if (capture_.has_value())
        capture_->release();
    scene_.reset();
}

ZRGstreamerVideoInput& CameraScene::play(int camera, const QRect& area, const std::string& name) {
    ZRGstreamerVideoInput& input = scene_->input(name);
    scene_->place(input, area);
    input.setStreamType(StreamCamera);
    input.setCurrentInterface(camera);
    input.start(static_cast<unsigned short>(camera));
    return input;
}

bool CameraScene::eventually(const std::function<bool()>& condition) {
    QElapsedTimer sinceLook;
    sinceLook.start();
    return scene_->waitUntil(
        [&] {
            // A look draws the scene again, which takes the time of what is waited for.
            if (sinceLook.elapsed() < betweenLooks)
                return false;
            const bool holds = condition();
            sinceLook.start();
            return holds;
        },
        limit);
}

std::string CameraScene::shownEventually(const std::string& expected, const QRect& area) {
    std::string shown;
    eventually([&] { return (shown = shownIn(scene_->grab(), area)) == expected; });
    return shown;
}

std::string CameraScene::printedEventually(const std::string& text, int times) {
    eventually([&] { return occurrencesOf(text, capture_->output()) >= times; });
    return capture_->output();
}

std::string CameraScene::released() {
    capture_->release();
    return capture_->output() + capture_->errors();
}

int occurrencesOf(const std::string& searched, const std::string& text) {
    int count = 0;
    for (std::size_t place = 0; (place = text.find(searched, place)) != std::string::npos; ++count)
        place += searched.size();
    return count;
}

}  // namespace ZR::test
