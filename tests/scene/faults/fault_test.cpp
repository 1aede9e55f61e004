#include "tests/scene/faults/fault_test.h"

namespace ZR::test {

WatchedInput& FaultTest::input(const std::string& name) {
    std::unique_ptr<ZRGstreamerVideoInput>& entry = ZRGstreamerVideoInput::instances[name];
    if (entry == nullptr)
        entry = std::make_unique<WatchedInput>(name);
    // The scene drains its queue from now on.
    return dynamic_cast<WatchedInput&>(scene_.input(name));
}

bool FaultTest::waitForLines(const std::string& text, int times, double seconds) {
    return scene_.waitUntil([&] { return output_.count(text) >= times; }, seconds);
}

Clock::time_point FaultTest::waitForRestarts(const WatchedInput& input, unsigned int times,
                                             double seconds) {
    const bool restarted = scene_.waitUntil([&] { return input.restarts() >= times; }, seconds);
    return restarted ? Clock::now() : Clock::time_point();
}

void FaultTest::expectNoLineFor(double seconds) {
    const std::vector<std::string> before = texts();
    scene_.runFor(seconds);
    EXPECT_EQ(texts(), before);
}

std::vector<std::string> FaultTest::texts() const {
    std::vector<std::string> result;
    for (const TimedLine& line : output_.lines())
        result.push_back(line.text);
    return result;
}

testing::AssertionResult isAfter(Clock::time_point later, Clock::time_point earlier,
                                 int milliseconds) {
    const auto passed =
        std::chrono::duration_cast<std::chrono::milliseconds>(later - earlier).count();
    if (passed >= milliseconds && passed <= milliseconds + graceMilliseconds)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "after " << passed << " ms, not " << milliseconds;
}

}  // namespace ZR::test
