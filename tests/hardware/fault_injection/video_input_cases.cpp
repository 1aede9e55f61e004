#include <fcntl.h>

#include <memory>
#include <string>

#include "hardware/video_input/gstreamer_video_input/functional/zr_gstreamer_video_input.h"
#include "tests/hardware/fault_injection/fault_case.h"
#include "tests/support/output_capture.h"
#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

using Input = ZRGstreamerVideoInput;

constexpr char sharedNode[] = "/dev/video1";
constexpr char sharedDecoder[] = "/dev/v4l-subdev3";
constexpr char secondNode[] = "/dev/video0";
constexpr char secondDecoder[] = "/dev/v4l-subdev9";

int openBefore = 0;

int openDescriptors() {
    int count = 0;
    for (int descriptor = 0; descriptor < 256; ++descriptor)
        if (::fcntl(descriptor, F_GETFD) >= 0)
            ++count;
    return count;
}

/// What is left is counted while a capture that is over keeps its files.
void rememberOpen() {
    OutputCapture capture;
    capture.release();
    openBefore = openDescriptors();
}

void layOut() {
    removeFile("/dev/media0");
    makeFile("/proc/device-tree/compatible", std::string("fsl,imx6q\0", 10));
    for (const char* const path : {sharedNode, sharedDecoder, secondNode, secondDecoder})
        makeDeviceNode(path);
}

void layOutWithMediaDevice() {
    layOut();
    // It opens, but knows nothing of a media controller.
    makeDeviceNode("/dev/media0");
}

/// A discovery opens what it knows: without a media device, the paths that are there before.
void know() {
    Input::videoDevices[0] = Input::videoDevices[2] = sharedNode;
    Input::videoSubDevices[0] = Input::videoSubDevices[2] = sharedDecoder;
    Input::videoDevices[1] = secondNode;
    Input::videoSubDevices[1] = secondDecoder;
    rememberOpen();
}

/// The variant, and for each node and decoder whether it is open.
std::string found() {
    std::string text = Input::runningOnQuadCore ? "quad " : "dual ";
    for (const int descriptor : Input::fileDescriptors)
        text += descriptor > 0 ? '+' : '-';
    text += ' ';
    for (const int descriptor : Input::fileDescriptorsSub)
        text += descriptor > 0 ? '+' : '-';
    return text;
}

std::string discover() {
    Input::doInitialSetup();
    return found();
}

/// Nothing may be lost.
std::string left() {
    return std::to_string(openDescriptors() - openBefore) + " open";
}

/// A call of the discovery that decides; it is not made again.
CallRule decides(const std::string& call, const std::string& outcome) {
    CallRule rule = repeats(call, outcome);
    rule.afterwards = outcome;
    return rule;
}

/// A close that is not made is the tracer's; the kernel's own always frees the descriptor.
CallRule keeps(const std::string& outcome) {
    CallRule rule = fails("close", outcome);
    rule.afterwards = outcome;
    return rule;
}

std::vector<CallRule> readingDeviceTree(const std::string& outcome, const std::string& keeping) {
    return {decides("openat", outcome), decides("read", outcome), decides("read", outcome),
            keeps(keeping)};
}

FaultCase discovering() {
    FaultCase each{"doInitialSetup",
                   layOut,
                   know,
                   discover,
                   left,
                   "quad +++ +++ | 4 open",
                   readingDeviceTree("dual +++ +++ | 4 open", "quad +++ +++ | 5 open")};
    each.calls.push_back(hides("openat", "there is no media device"));
    for (const char* const lost : {"quad -+- +++", "quad +++ -+-", "quad +-+ +++", "quad +++ +-+"})
        each.calls.push_back(decides("openat", std::string(lost) + " | 3 open"));
    return each;
}

FaultCase discoveringNothing() {
    FaultCase each{"doInitialSetup_without_devices",
                   layOut,
                   rememberOpen,
                   discover,
                   left,
                   "quad --- --- | 0 open",
                   readingDeviceTree("dual --- --- | 0 open", "quad --- --- | 1 open")};
    each.calls.push_back(hides("openat", "there is no media device"));
    for (int i = 0; i < 4; ++i)
        each.calls.push_back(hides("openat", "no path is known"));
    return each;
}

/// The enumeration gives back what it has opened.
FaultCase enumeratingInVain() {
    FaultCase each = discovering();
    each.name = "doInitialSetup_with_a_media_device_that_is_none";
    each.layOut = layOutWithMediaDevice;
    each.calls[4] = hides("openat", "no entity is known either way");
    each.calls.insert(each.calls.begin() + 5, {hides("ioctl", "no entity is known either way"),
                                               keeps("quad +++ +++ | 5 open")});
    return each;
}

FaultCase gettingInstance() {
    FaultCase each = discovering();
    each.name = "getInstance";
    each.operate = [] {
        Input* const made = Input::getInstance("camera");
        const bool isThere = made != nullptr && made == Input::getInstance("camera");
        return (isThere ? "" : "no object, ") + found();
    };
    return each;
}

/// An input with its first camera chosen.
struct CameraInput : Input {
    CameraInput() : Input("camera") {
        setStreamType(StreamCamera);
        currentInput = 1;
    }
};

std::unique_ptr<CameraInput> camera;

/// A process in which GStreamer is up, and a capture node that knows nothing of a selection.
void openNodes() {
    Input::busThreadLaunched = Input::gstInitDone = true;
    camera = std::make_unique<CameraInput>();
    for (int i = 0; i < 2; ++i) {
        Input::fileDescriptors[i] = ::open(sharedNode, O_RDWR | O_CLOEXEC);
        Input::fileDescriptorsSub[i] = ::open(sharedDecoder, O_RDWR | O_CLOEXEC);
    }
    Input::fileDescriptors[2] = Input::fileDescriptors[0];
    Input::fileDescriptorsSub[2] = Input::fileDescriptorsSub[0];
}

/// What is printed comes behind it.
FaultCase changingCamera() {
    return {"changeInterfaceSlot",
            layOut,
            openNodes,
            [] {
                camera->changeInterfaceSlot();
                return std::string("changed");
            },
            nullptr,
            "changed",
            {hides("ioctl", "a node without the selection has one camera only")}};
}

FaultCase quitting() {
    FaultCase each{"doQuit",
                   layOut,
                   openNodes,
                   [] {
                       ZRVideoInputInterface::doQuit();
                       return std::string(Input::quit ? "quit" : "runs");
                   },
                   nullptr,
                   "quit",
                   {}};
    for (int i = 0; i < 6; ++i)
        each.calls.push_back(hides("close", "nobody can do anything about it"));
    return each;
}

}  // namespace

std::vector<FaultCase> videoInputCases() {
    return {discovering(),     discoveringNothing(), enumeratingInVain(),
            gettingInstance(), changingCamera(),     quitting()};
}

}  // namespace ZR::test
