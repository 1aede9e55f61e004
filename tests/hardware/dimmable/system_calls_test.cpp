#include <fcntl.h>
#include <sys/syscall.h>

#include <cerrno>
#include <functional>
#include <string>
#include <vector>

#include "tests/hardware/dimmable/dimmable_board.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

// What the kernel sees of building, of each operation and of the end.

namespace ZR::test {
namespace {

class DimmableSystemCalls : public testing::Test {
  protected:
    void SetUp() override {
        if (!whyNotTraceable().empty())
            GTEST_SKIP() << whyNotTraceable();
    }
};

Trace traceBuilding() {
    return traceSystemCalls([](TracedRun& run) {
        run.begin();
        (void)ZRDimmable::getInstance();
        run.end();
    });
}

/// Traces @p operation on an object that is built already; what it returns is said.
Trace traceOperation(const std::function<unsigned int()>& operation, const FaultPlan& plan = {}) {
    return traceSystemCalls(
        [&operation](TracedRun& run) {
            (void)ZRDimmable::getInstance();
            run.begin();
            const unsigned int result = operation();
            run.end();
            run.say(std::to_string(result));
        },
        plan);
}

bool opensAttribute(const SystemCall& call) {
    return call.name == "openat" && call.text.rfind("/sys/", 0) == 0;
}

/// Not the report that goes to standard error.
bool isWriteToDevice(const SystemCall& call) {
    return call.name == "write" && call.arguments[0] > 2;
}

using Paths = std::vector<std::string>;

/// The attributes opened, in their order.
Paths opened(const Trace& trace) {
    Paths paths;
    for (const SystemCall& call : trace.calls)
        if (opensAttribute(call))
            paths.push_back(call.text);
    return paths;
}

TEST_F(DimmableSystemCalls, building_probes_detaches_the_trigger_and_opens_in_the_fixed_order) {
    makeBoard();
    EXPECT_EQ(opened(traceBuilding()),
              (Paths{platformDisplay, rgbFile, keyTrigger, platformDisplay, keyFile, keyMaximum,
                     rgbFile, beeperFile, encoderFile, encoderMaximum}));
}

TEST_F(DimmableSystemCalls, building_tries_each_candidate_that_may_be_probed_and_no_other) {
    OutputCapture capture;
    EXPECT_EQ(opened(traceBuilding()),
              (Paths{platformDisplay, classDisplay, rgbFile, otherRgbFile, keyTrigger, otherDisplay,
                     keyFile, otherRgbFile, beeperFile, encoderFile}));
}

TEST_F(DimmableSystemCalls, a_missing_key_skips_its_maximum_and_nothing_else) {
    makeBoard();
    removeFile(keyFile);
    EXPECT_EQ(opened(traceBuilding()),
              (Paths{platformDisplay, rgbFile, keyTrigger, platformDisplay, keyFile, rgbFile,
                     beeperFile, encoderFile, encoderMaximum}));
}

TEST_F(DimmableSystemCalls, a_missing_encoder_skips_its_maximum) {
    makeBoard();
    removeFile(encoderFile);
    EXPECT_EQ(opened(traceBuilding()).back(), encoderFile);
}

TEST_F(DimmableSystemCalls, building_opens_everything_close_on_exec_and_nothing_truncated) {
    makeBoard();
    std::size_t count = 0;
    for (const SystemCall& call : traceBuilding().calls) {
        if (!opensAttribute(call))
            continue;
        ++count;
        EXPECT_NE(call.arguments[2] & O_CLOEXEC, 0U) << call;
        EXPECT_EQ(call.arguments[2] & O_TRUNC, 0U) << call;
    }
    EXPECT_EQ(count, 10U);
}

TEST_F(DimmableSystemCalls, the_devices_and_the_trigger_are_opened_for_reading_and_writing) {
    makeBoard();
    Paths paths;
    for (const SystemCall& call : traceBuilding().calls)
        if (opensAttribute(call) && (call.arguments[2] & O_ACCMODE) == O_RDWR)
            paths.push_back(call.text);
    EXPECT_EQ(paths,
              (Paths{keyTrigger, platformDisplay, keyFile, rgbFile, beeperFile, encoderFile}));
}

TEST_F(DimmableSystemCalls, building_writes_the_four_bytes_none_and_nothing_else) {
    makeBoard();
    std::vector<std::string> written;
    for (const SystemCall& call : traceBuilding().calls)
        if (call.name == "write")
            written.push_back(call.text);
    EXPECT_EQ(written, (std::vector<std::string>{"none"}));
}

TEST_F(DimmableSystemCalls, a_value_costs_a_seek_and_one_write_of_number_and_newline) {
    makeColorBoard();
    const std::vector<std::pair<std::function<unsigned int()>, std::string>> operations{
        {[] { return ZRDimmable::getInstance()->setIntensity(50, DisplayBacklight); }, "128\n"},
        {[] { return ZRDimmable::getInstance()->setIntensity(0xFFFFFF, KeyBacklight); },
         "16777215\n"},
        {[] { return ZRDimmable::getInstance()->setIntensity(0, EncoderBacklight); }, "0\n"},
        {[] { return ZRDimmable::getInstance()->setIntensity(50, Beeper); }, "50\n"},
        {[] { return ZRDimmable::getInstance()->setColor(0x12345678, RGBLED); }, "3430008\n"}};
    for (const auto& [operation, text] : operations) {
        const Trace trace = traceOperation(operation);
        ASSERT_EQ(trace.names(), "lseek write");
        EXPECT_EQ(trace.calls[0].arguments[1], 0U);
        EXPECT_EQ(trace.calls[1].text, text);
        EXPECT_EQ(trace.text, "0");
    }
}

TEST_F(DimmableSystemCalls, a_value_that_the_driver_takes_in_pieces_arrives_whole) {
    makeBoard();
    EXPECT_EQ(traceOperation([] { return ZRDimmable::getInstance()->setIntensity(100, Beeper); },
                             {{}, {{SYS_write, 1, 0, 1}}})
                  .text,
              "0");
    EXPECT_EQ(firstLine(beeperFile), "100\n");
    EXPECT_EQ(traceOperation([] { return ZRDimmable::getInstance()->setColor(0xFFFFFF, RGBLED); },
                             {{}, {{SYS_write, 1, 0, 7}}})
                  .text,
              "0");
    EXPECT_EQ(firstLine(rgbFile), "16777215\n");
}

TEST_F(DimmableSystemCalls, a_reading_costs_a_seek_and_one_read) {
    makeColorBoard();
    const std::vector<std::function<unsigned int()>> operations{
        [] { return getIntensity(DisplayBacklight).result; },
        [] { return getIntensity(KeyBacklight).result; },
        [] { return getIntensity(Beeper).result; },
        [] { return getColor(EncoderBacklight).result; },
        [] { return getColor(RGBLED).result; },
        [] { return getMinimum().result; }};
    for (const auto& operation : operations) {
        const Trace trace = traceOperation(operation);
        EXPECT_EQ(trace.names(), "lseek read");
        EXPECT_EQ(trace.text, "0");
    }
}

TEST_F(DimmableSystemCalls, a_value_that_breaks_off_is_a_failed_read) {
    makeBoard();
    const FaultPlan breakOff{{}, {{SYS_read, 1, 0, 1}, {SYS_read, 2, EIO, 0}}};
    EXPECT_EQ(traceOperation([] { return getIntensity(KeyBacklight).result; }, breakOff).text, "5");
    EXPECT_EQ(traceOperation([] { return getColor(RGBLED).result; }, breakOff).text, "5");
}

TEST_F(DimmableSystemCalls, a_dark_display_is_read_then_written) {
    makeBoard();
    makeFile(platformDisplay, "3\n");
    const Trace trace = traceOperation([] { return getIntensity(DisplayBacklight).value; });
    ASSERT_EQ(trace.names(), "lseek read lseek write");
    EXPECT_EQ(trace.calls[3].text, "13\n");
    EXPECT_EQ(trace.text, "5");
}

TEST_F(DimmableSystemCalls, a_refused_or_invalid_value_costs_nothing) {
    makeBoard();
    EXPECT_EQ(
        traceOperation([] { return ZRDimmable::getInstance()->setIntensity(1, RGBLED); }).names(),
        "");
    EXPECT_EQ(traceOperation([] { return getColor(KeyBacklight).result; }).names(), "");
    EXPECT_EQ(
        traceOperation([] {
            return static_cast<unsigned int>(ZRDimmable::getInstance()->isColorSupported(RGBLED));
        }).names(),
        "");
}

TEST_F(DimmableSystemCalls, a_value_that_the_driver_refused_once_is_never_sent_again) {
    makeBoard();
    for (const int error : {ERANGE, EIO, EBUSY}) {
        const Trace trace = traceOperation(
            [] {
                ZRDimmable& device = *ZRDimmable::getInstance();
                return 100 * device.setIntensity(100, KeyBacklight) +
                       10 * device.setIntensity(20, KeyBacklight) +
                       getIntensity(KeyBacklight).value;
            },
            {{}, {{SYS_write, 1, error, 0}}});
        std::string sent;
        for (const SystemCall& call : trace.calls)
            if (isWriteToDevice(call) && !call.injected)
                sent += call.text;
        EXPECT_EQ(sent, "51\n");
        EXPECT_EQ(trace.text, "620");
    }
}

/// Descriptors in the order in which they are closed by the end of the object.
std::vector<int> closedByEnd(const FaultPlan& plan = {}) {
    const Trace trace = traceSystemCalls(
        [](TracedRun& run) {
            ZRDimmable* const object = ZRDimmable::getInstance();
            (void)object->setIntensity(50, KeyBacklight);
            run.begin();
            object->~ZRDimmable();
            run.end();
        },
        plan);
    EXPECT_FALSE(trace.died);
    std::vector<int> descriptors;
    for (const SystemCall& call : trace.calls)
        if (call.name == "close")
            descriptors.push_back(static_cast<int>(call.arguments[0]));
    EXPECT_EQ(trace.count("write"), 0U) << trace.names();
    return descriptors;
}

/// The descriptors in the order in which building opens the devices.
std::vector<int> openedByBuilding() {
    std::vector<int> descriptors;
    for (const SystemCall& call : traceBuilding().calls)
        if (opensAttribute(call) && (call.arguments[2] & O_ACCMODE) == O_RDWR &&
            call.text != keyTrigger)
            descriptors.push_back(static_cast<int>(call.result));
    return descriptors;
}

TEST_F(DimmableSystemCalls, the_end_closes_in_the_order_of_opening_and_writes_nothing) {
    makeBoard();
    const std::vector<int> inOrder = openedByBuilding();
    ASSERT_EQ(inOrder.size(), 5U);
    EXPECT_EQ(closedByEnd(), inOrder);
}

TEST_F(DimmableSystemCalls, a_failed_close_does_not_end_the_process_nor_stop_the_others) {
    makeBoard();
    for (std::size_t index = 0; index < 5; ++index)
        EXPECT_EQ(closedByEnd({{{index, EIO, 0}}, {}}).size(), 5U);
}

TEST_F(DimmableSystemCalls, the_end_closes_only_what_is_open) {
    makeBoard();
    removeFile(keyFile);
    removeFile(beeperFile);
    EXPECT_EQ(closedByEnd().size(), 3U);
}

}  // namespace
}  // namespace ZR::test
