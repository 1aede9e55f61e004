#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "mediactl/mediactl.h"
#include "tests/platform/media_controller/media_kernel_substitute.h"

namespace ZR::test {

using Calls = std::vector<std::string>;

struct UnrefDevice {
    void operator()(media_device* media) const { media_device_unref(media); }
};

/// A handle on a simulated kernel with the graph of a terminal of the DualLite variant.
class MediaDeviceTest : public testing::Test {
  protected:
    MediaDeviceTest() : media_(media_device_new("/dev/media0")) {
        mediaKernel() = cameraGraph(false);
    }

    ~MediaDeviceTest() override {
        media_.reset();
        EXPECT_FALSE(mediaKernel().hasOpenDescriptors());
    }

    int enumerate() { return media_device_enumerate(media_.get()); }

    /// The graph is known and what took it is out of the log.
    void enumerateSilently() {
        ASSERT_EQ(enumerate(), 0);
        calls().clear();
        mediaKernel().openFlags.clear();
    }

    static Calls& calls() { return mediaKernel().calls; }

    static std::size_t count(const std::string& kind) {
        std::size_t found = 0;
        for (const std::string& call : calls())
            found += call.compare(0, kind.size(), kind) == 0 ? 1U : 0U;
        return found;
    }

    static SimulatedEntity& entity(const std::string& name) {
        for (SimulatedEntity& candidate : mediaKernel().entities)
            if (candidate.name == name)
                return candidate;
        throw std::out_of_range(name);
    }

    std::unique_ptr<media_device, UnrefDevice> media_;
};

}  // namespace ZR::test
