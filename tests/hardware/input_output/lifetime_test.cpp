#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/hardware/input_output/channel.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

namespace ZR::test {
namespace {

constexpr char input[] = "/sys/bus/platform/devices/zr_di.0/state";

}  // namespace

TEST(Lifetime, the_destructor_closes_the_descriptor) {
    makeFile(input, "1\n");
    auto channel = std::make_unique<Channel>(DigitalInput, 1);
    const int descriptor = channel->fileDescriptor;
    ASSERT_TRUE(isOpen(descriptor));
    channel.reset();
    EXPECT_FALSE(isOpen(descriptor));
}

TEST(Lifetime, the_destructor_closes_by_a_pointer_to_the_base) {
    makeFile(input, "1\n");
    auto* const channel = new Channel(DigitalInput, 1);
    const int descriptor = channel->fileDescriptor;
    std::unique_ptr<ZRInputOutput> base(channel);
    ASSERT_TRUE(isOpen(descriptor));
    base.reset();
    EXPECT_FALSE(isOpen(descriptor));
}

TEST(Lifetime, the_destructor_closes_minus_1_as_well) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    const Trace trace = traceSystemCalls([](TracedRun& run) {
        const ReportLog log;
        auto channel = std::make_unique<Channel>(DigitalInput, 5);
        run.begin();
        channel.reset();
        run.end();
        run.say("alive");
    });
    EXPECT_EQ(trace.names(), "close");
    EXPECT_EQ(static_cast<int>(trace.calls.at(0).arguments[0]), -1);
    EXPECT_EQ(trace.text, "alive");
}

TEST(Lifetime, initializing_again_opens_a_new_descriptor_and_leaves_the_old_one_open) {
    makeFile(input, "1\n");
    auto channel = std::make_unique<Channel>(DigitalInput, 1);
    const int first = channel->fileDescriptor;
    EXPECT_EQ(channel->initialize(DigitalInput, 1), 0U);
    const int second = channel->fileDescriptor;
    EXPECT_NE(second, first);
    EXPECT_TRUE(isOpen(first));
    channel.reset();
    EXPECT_FALSE(isOpen(second));
    EXPECT_TRUE(isOpen(first));
}

TEST(Lifetime, a_failed_initialization_leaves_the_old_descriptor_open) {
    makeFile(input, "1\n");
    const ReportLog log;
    Channel channel(DigitalInput, 1);
    const int first = channel.fileDescriptor;
    EXPECT_EQ(channel.initialize(DigitalInput, 2), 2U);
    EXPECT_EQ(channel.fileDescriptor, -1);
    EXPECT_TRUE(isOpen(first));
}

TEST(Lifetime, binding_costs_one_open) {
    if (const std::string reason = whyNotTraceable(); !reason.empty())
        GTEST_SKIP() << reason;
    makeFile(input, "1\n");
    const Trace trace = traceSystemCalls([](TracedRun& run) {
        run.begin();
        const Channel channel(DigitalInput, 1);
        run.end();
    });
    EXPECT_EQ(trace.names(), "openat");
}

}  // namespace ZR::test
