#include <gtest/gtest.h>
#include <linux/media.h>
#include <linux/v4l2-subdev.h>
#include <linux/videodev2.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "camera_board.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

using Requests = std::vector<unsigned long>;

class CameraCosts : public CameraBoard {
  protected:
    void SetUp() override {
        ASSERT_EQ("", whyNotTraceable());
        CameraBoard::SetUp();
    }
};

/// Whether a request is one of a media controller, a video node or a sub-device: a program asks its
/// terminal too.
bool isOfADevice(unsigned long request) {
    return _IOC_TYPE(request) == '|' || _IOC_TYPE(request) == 'V';
}

/// The requests to devices, in the order of their numbers: what was asked how often.
Requests sorted(Requests requests) {
    requests.erase(std::remove_if(requests.begin(), requests.end(),
                                  [](unsigned long request) { return !isOfADevice(request); }),
                   requests.end());
    std::sort(requests.begin(), requests.end());
    return requests;
}

Requests without(unsigned char type, Requests requests) {
    requests.erase(
        std::remove_if(requests.begin(), requests.end(),
                       [type](unsigned long request) { return _IOC_TYPE(request) == type; }),
        requests.end());
    return requests;
}

/// What one process of media-ctl asks of the devices.
Requests requestsOfMediaCtl(const std::string& option, const std::string& text) {
    constexpr char file[] = "/tmp/calls";
    run(std::string("strace -f -X raw -e trace=ioctl -o ") + file + " media-ctl " + option + " \"" +
        text + "\" >/dev/null 2>&1 || true");
    Requests requests;
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t comma = line.find(", ");
        if (line.find("ioctl(") != std::string::npos && comma != std::string::npos)
            requests.push_back(std::strtoul(line.c_str() + comma + 2, nullptr, 0));
    }
    return sorted(requests);
}

/// Runs what is to be measured after what comes before it, in a process of its own.
Trace traced(const std::function<void()>& before, const std::function<void()>& measured) {
    Trace trace = traceSystemCalls([&](TracedRun& traced) {
        before();
        traced.begin();
        measured();
        traced.end();
    });
    EXPECT_FALSE(trace.died);
    return trace;
}

Requests requestsOf(const Trace& trace) {
    Requests requests;
    for (const SystemCall& call : trace.calls)
        if (call.name == "ioctl")
            requests.push_back(call.arguments[1] & 0xFFFFFFFF);
    return sorted(requests);
}

/// What a set-up of an input asks of the devices after other set-ups.
Requests requestsOfSetup(const std::vector<int>& before, int input) {
    Cameras* cameras = nullptr;
    const Trace trace = traced(
        [&] {
            static Cameras made;
            cameras = &made;
            for (const int earlier : before)
                cameras->setupCameraInput(earlier);
        },
        [&] { cameras->setupCameraInput(input); });
    return requestsOf(trace);
}

std::size_t opensOf(const std::string& path, const Trace& trace) {
    return static_cast<std::size_t>(std::count_if(
        trace.calls.begin(), trace.calls.end(),
        [&path](const SystemCall& call) { return call.name == "openat" && call.text == path; }));
}

void doNothing() {}

const Requests nothing;
const Requests selectionIsRead{VIDIOC_G_CTRL};

/// A first set-up: what media-ctl asks for the formats, and the standard.
void expectRequestsOfTheFormats(int input, Requests more) {
    Requests expected = without('|', (run("media-ctl -l \"" + joined(pathLinks()) + '"'),
                                      requestsOfMediaCtl("-V", pathFormats(input, pal))));
    ASSERT_LT(5U, expected.size());
    more.insert(more.end(), {VIDIOC_QUERYSTD, VIDIOC_S_STD});
    expected.insert(expected.end(), more.begin(), more.end());
    renewGraph();
    EXPECT_EQ(sorted(expected), requestsOfSetup({}, input));
}

}  // namespace

// media-ctl enumerates the graph in each of its processes: it is given all seven links at once.
TEST_F(CameraCosts, discovery_asks_the_devices_what_one_media_ctl_asks_for_the_seven_links) {
    const Requests expected = requestsOfMediaCtl("-l", joined(pathLinks()));
    ASSERT_EQ(7, std::count(expected.begin(), expected.end(), MEDIA_IOC_SETUP_LINK));
    renewGraph();
    EXPECT_EQ(expected, requestsOf(traced(&doNothing, &Cameras::doInitialSetup)));
}

TEST_F(CameraCosts, discovery_enumerates_once_and_opens_each_node_once) {
    const Trace trace = traced(&doNothing, &Cameras::doInitialSetup);
    const Requests requests = requestsOf(trace);
    EXPECT_EQ(1, std::count(requests.begin(), requests.end(), MEDIA_IOC_DEVICE_INFO));
    for (const int input : {0, 1}) {
        EXPECT_EQ(1U, opensOf(nodeOf(captureEntity(input)), trace));
        EXPECT_EQ(1U, opensOf(nodeOf(decoderEntity(input)), trace));
    }
    EXPECT_EQ(1U, opensOf("/proc/device-tree/compatible", trace));
}

TEST_F(CameraCosts, a_second_discovery_makes_no_system_call) {
    const Trace trace = traced(&Cameras::doInitialSetup, &Cameras::doInitialSetup);
    EXPECT_EQ("", trace.names());
}

TEST_F(CameraCosts, the_first_start_of_input_0_asks_what_media_ctl_asks_for_its_formats) {
    expectRequestsOfTheFormats(0, {VIDIOC_G_CTRL});
}

TEST_F(CameraCosts, the_first_start_of_input_1_asks_what_media_ctl_asks_for_its_formats) {
    expectRequestsOfTheFormats(1, {});
}

TEST_F(CameraCosts, the_first_start_of_input_2_selects_it_besides) {
    expectRequestsOfTheFormats(2, {VIDIOC_G_CTRL, VIDIOC_S_CTRL});
}

TEST_F(CameraCosts, the_second_start_of_input_1_makes_no_system_call) {
    static Cameras* cameras = nullptr;
    const Trace trace = traced(
        [] {
            static Cameras made;
            cameras = &made;
            cameras->setupCameraInput(1);
        },
        [] { cameras->setupCameraInput(1); });
    EXPECT_EQ("", trace.names());
}

TEST_F(CameraCosts, with_one_known_standard_a_start_of_inputs_0_and_2_reads_the_selection) {
    EXPECT_EQ(selectionIsRead, requestsOfSetup({0, 2}, 2));
    EXPECT_EQ(selectionIsRead, requestsOfSetup({2, 0}, 0));
}

TEST_F(CameraCosts, with_one_known_standard_a_switch_between_inputs_0_and_2_writes_it_besides) {
    const Requests both = sorted({VIDIOC_G_CTRL, VIDIOC_S_CTRL});
    EXPECT_EQ(both, requestsOfSetup({0, 2}, 0));
    EXPECT_EQ(both, requestsOfSetup({2, 0}, 2));
}

TEST_F(CameraCosts, a_start_that_applies_again_does_not_detect_again) {
    Requests first = requestsOfSetup({}, 0);
    ASSERT_EQ(1, std::count(first.begin(), first.end(), VIDIOC_QUERYSTD));
    first.erase(std::find(first.begin(), first.end(), VIDIOC_QUERYSTD));
    const Requests again = requestsOfSetup({0}, 0);
    EXPECT_EQ(1, std::count(again.begin(), again.end(), VIDIOC_S_STD));
    EXPECT_EQ(first, again);
}

}  // namespace ZR::test
