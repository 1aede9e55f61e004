#include "tests/hardware/video_input/capture_board.h"

#include <fcntl.h>

#include <utility>

namespace ZR::test {
namespace {

constexpr char compatible[] = "/proc/device-tree/compatible";

/// The library as it is when it has been loaded: cases can share a process, too.
void forgetDiscovery() {
    using Input = ZRGstreamerVideoInput;
    Input::instances.clear();
    for (int i = 0; i < Input::inputCount; ++i) {
        Input::videoDevices[i].clear();
        Input::videoSubDevices[i].clear();
        Input::fileDescriptors[i] = Input::fileDescriptorsSub[i] = -1;
        Input::lastSetStandard[i] = 2;
    }
    Input::twName.clear();
    Input::advName.clear();
    Input::runningOnQuadCore = false;
    Input::mediaDevice = nullptr;
    Input::initialSetupPending = true;
    Input::busThreadLaunched = false;
    Input::palSize = "720x576";
    Input::ntscSize = "720x480";
}

}  // namespace

CaptureTest::CaptureTest() {
    forgetDiscovery();
    FileReadSubstitute::next = FileReadFault::None;
    Media::reset();
    Media::entities = {
        {"ipu1_csi1 capture", "/dev/video1"},   {"tw9912 1-0044", "/dev/v4l-subdev3"},
        {"ipu1_csi0_mux", "/dev/v4l-subdev7"},  {"ipu1_csi0 capture", "/dev/video0"},
        {"adv7180 2-0021", "/dev/v4l-subdev9"}, {"ipu2_csi1 capture", "/dev/video5"}};
    Devices::reset();
    Devices::paths = {{"/dev/video1", 10},
                      {"/dev/video5", 10},
                      {"/dev/video0", 11},
                      {"/dev/v4l-subdev3", 12},
                      {"/dev/v4l-subdev9", 13}};
    Devices::devices = {{10, {}}, {11, {}}, {12, {}}, {13, {}}};
    setDeviceTree(treeText(dualLiteTree));
    CaptureCallLog::calls.clear();
}

CaptureTest::~CaptureTest() {
    Devices::leaveOpenToKernel();
}

void CaptureTest::setDeviceTree(const std::string& text) {
    FileReadSubstitute::files[compatible] = text;
}

void CaptureTest::discover(bool quadCore) {
    setDeviceTree(quadCore ? treeText(quadTree) : treeText(dualLiteTree));
    ZRGstreamerVideoInput::doInitialSetup();
    (void)takeCalls();
}

Calls CaptureTest::callsOf(const std::string& beginning) {
    Calls found;
    for (const std::string& call : calls())
        if (call.compare(0, beginning.size(), beginning) == 0)
            found.push_back(call);
    return found;
}

Calls CaptureTest::takeCalls() {
    return std::exchange(CaptureCallLog::calls, {});
}

Calls openingNodes(const std::string& shared, const std::string& sharedDecoder,
                   const std::string& second, const std::string& secondDecoder) {
    const std::string flags = "' " + std::to_string(O_RDWR | O_CLOEXEC);
    return {"open '" + shared + flags, "open '" + sharedDecoder + flags, "open '" + second + flags,
            "open '" + secondDecoder + flags};
}

}  // namespace ZR::test
