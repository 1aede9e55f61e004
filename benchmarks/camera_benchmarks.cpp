#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include "benchmarks/camera_floor.h"
#include "benchmarks/comparison.h"
#include "benchmarks/fresh_process.h"
#include "benchmarks/operations.h"
#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"

namespace ZR::benchmarks {
namespace {

using Floor = std::shared_ptr<const CameraFloor>;

// A process takes a hundred milliseconds on an emulated machine.
constexpr long processPairs = 10;

// The text of the formats.
constexpr long formatText = 1;

/// Runs media-ctl with one option and waits for its end.
bool runMediaCtl(std::string option, std::string text) {
    std::string name = "media-ctl";
    char* const arguments[] = {name.data(), option.data(), text.data(), nullptr};
    posix_spawn_file_actions_t actions;
    if (::posix_spawn_file_actions_init(&actions) != 0)
        return false;
    (void)::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = -1;
    const bool started =
        ::posix_spawnp(&child, name.c_str(), &actions, nullptr, arguments, environ) == 0;
    (void)::posix_spawn_file_actions_destroy(&actions);
    int status = -1;
    return started && ::waitpid(child, &status, 0) == child && status == EXIT_SUCCESS;
}

/// The object whose inputs are set up; made by the first of the set-ups.
ZRGstreamerVideoInput& cameras() {
    static ZRGstreamerVideoInput& made = *ZRGstreamerVideoInput::getInstance("camera");
    return made;
}

bool discover() {
    ZRGstreamerVideoInput::initialSetupPending = true;
    ZRGstreamerVideoInput::doInitialSetup();
    return ZRGstreamerVideoInput::fileDescriptors[0] > 0;
}

/// With input 2 never started, each start of input 0 sets everything.
bool startAnew() {
    cameras().setupCameraInput(0);
    return true;
}

/// With one standard of both inputs, a start asks for the selection alone.
ZRGstreamerVideoInput& knownCameras() {
    static ZRGstreamerVideoInput& made = [&]() -> ZRGstreamerVideoInput& {
        ZRGstreamerVideoInput& input = *ZRGstreamerVideoInput::getInstance("known camera");
        input.setupCameraInput(2);
        input.setupCameraInput(0);
        return input;
    }();
    return made;
}

bool startKnown() {
    knownCameras().setupCameraInput(0);
    return true;
}

void compareDiscovery(const Floor& floor) {
    const Preparation disabled = [floor](long /*operations*/) { return floor->disableLinks(); };
    Comparison bare;
    bare.operation = "camera discovery";
    bare.longestBatch = 1;
    bare.before = disabled;
    bare.floor = inFreshProcess(batchOf([floor] { return floor->discover(); }));
    bare.library = inFreshProcess(batchOf(&discover));
    registerComparison(std::move(bare));
    Comparison program;
    program.operation = "camera discovery/media-ctl";
    program.longestBatch = 1;
    program.samples = processPairs;
    program.before = disabled;
    program.floor = batchOf([texts = floor->linkTexts()] { return runMediaCtl("-l", texts); });
    program.library = inFreshProcess(batchOf(&discover));
    registerComparison(std::move(program));
}

void compareStarts(const Floor& floor) {
    Comparison bare;
    bare.operation = "camera start";
    bare.allowedAllocations = formatText;
    compare(
        std::move(bare), [floor] { return floor->start(); }, &startAnew);
    Comparison program;
    program.operation = "camera start/media-ctl";
    program.longestBatch = 1;
    program.samples = processPairs;
    program.floor = batchOf([texts = floor->formatTexts()] { return runMediaCtl("-V", texts); });
    program.library = batchOf(&startAnew);
    registerComparison(std::move(program));
    compare(
        "camera start/known", [floor] { return floor->readSelection(); }, &startKnown);
}

}  // namespace

bool compareCameras() {
    const auto floor = std::make_shared<const CameraFloor>();
    if (!floor->isUsable())
        return false;
    compareDiscovery(floor);
    compareStarts(floor);
    return true;
}

}  // namespace ZR::benchmarks
