#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/hardware/dimmable/dimmable_board.h"
#include "tests/support/private_root.h"

// For the thread sanitizer above all.

namespace ZR::test {
namespace {

using DimmableThreads = DimmableTest;

constexpr int rounds = 200;

/// Runs @p step again and again in @p count threads; false when one of them ever answers false.
bool runThreads(int count, const std::function<bool(int)>& step) {
    std::vector<std::thread> threads;
    std::atomic<bool> allGood{true};
    threads.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < rounds; ++round)
                if (!step(round))
                    allGood = false;
        });
    for (std::thread& thread : threads)
        thread.join();
    return allGood;
}

TEST_F(DimmableThreads, the_display_may_be_used_by_several) {
    makeBoard();
    EXPECT_TRUE(runThreads(4, [](int round) {
        const unsigned int value = round % 2 == 0 ? 20 : 30;
        const bool set = device().setIntensity(value, DisplayBacklight) == 0;
        const Reading reading = getIntensity(DisplayBacklight);
        return set && reading.result == 0 && (reading.value == 20 || reading.value == 30);
    }));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableThreads, the_beeper_may_be_used_by_several) {
    makeBoard();
    makeFile(beeperFile, "50\n");
    EXPECT_TRUE(runThreads(4, [](int round) {
        const bool set = device().setIntensity(round % 2 == 0 ? 50 : 51, Beeper) == 0;
        return set && getIntensity(Beeper) == Reading{0, 20};
    }));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableThreads, the_rgb_led_may_be_used_by_several) {
    makeBoard();
    makeFile(rgbFile, "1\n");
    EXPECT_TRUE(runThreads(4, [](int round) {
        const unsigned int color = round % 2 == 0 ? 1 : 2;
        const bool set = device().setColor(color, RGBLED) == 0;
        const Reading reading = getColor(RGBLED);
        return set && reading.result == 0 && (reading.value == 1 || reading.value == 2);
    }));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableThreads, the_minimum_may_change_while_others_read_and_set) {
    makeBoard();
    EXPECT_TRUE(runThreads(4, [](int round) {
        const unsigned int minimum = round % 2 == 0 ? 10 : 20;
        return device().setMinDisplayBacklightIntensity(minimum) == 0 &&
               device().setIntensity(50, DisplayBacklight) == 0 && getMinimum().result == 0;
    }));
    EXPECT_EQ(reports(), Reports{});
}

/// Threads that share a file without a lock also share the place where they read and write. Here
/// every place within their reach is the start of a line, so the value is always one of theirs; the
/// two values differ in one digit, so none is half one and half the other.
void makeSharedIllumination(const char* path) {
    constexpr int lines = 16384;
    std::string content;
    for (int i = 0; i < lines; ++i)
        content += "128\n";
    makeFile(path, content);
}

TEST_F(DimmableThreads, key_and_encoder_may_be_used_by_several_without_a_lock) {
    makeBoard();
    makeSharedIllumination(keyFile);
    makeSharedIllumination(encoderFile);
    EXPECT_TRUE(runThreads(4, [](int round) {
        bool allGood = true;
        for (const ZRDimmableDevice each : {KeyBacklight, EncoderBacklight}) {
            const bool set = device().setIntensity(round % 2 == 0 ? 50 : 58, each) == 0;
            const Reading reading = getIntensity(each);
            allGood = allGood && set && reading.result == 0 &&
                      (reading.value == 50 || reading.value == 58);
        }
        return allGood;
    }));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableThreads, a_colour_of_key_and_encoder_may_be_read_by_several_without_a_lock) {
    makeColorBoard();
    makeSharedIllumination(keyFile);
    makeSharedIllumination(encoderFile);
    EXPECT_TRUE(runThreads(4, [](int round) {
        bool allGood = true;
        for (const ZRDimmableDevice each : {KeyBacklight, EncoderBacklight}) {
            const bool set = device().setIntensity(round % 2 == 0 ? 128 : 148, each) == 0;
            const Reading reading = getColor(each);
            allGood = allGood && set && reading.result == 0 &&
                      (reading.value == 128 || reading.value == 148);
        }
        return allGood;
    }));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableThreads, a_failing_illumination_may_be_used_by_several_without_a_lock) {
    makeBoard();
    (void)device();
    makeFile(keyFile, "");
    {
        const RefusedWrites refused;
        // 1 where another thread's failure comes between the look at the stream and its use.
        EXPECT_TRUE(runThreads(4, [](int) {
            const Reading reading = getIntensity(KeyBacklight);
            const unsigned int set = device().setIntensity(50, KeyBacklight);
            return (reading == Reading{5, untouched} || reading == Reading{1, untouched}) &&
                   (set == 6 || set == 1);
        }));
    }
    makeFile(keyFile, "128\n");
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 50}));
    EXPECT_EQ(device().setIntensity(100, KeyBacklight), 0U);
    EXPECT_EQ(readFile(keyFile), "255\n");
}

TEST_F(DimmableThreads, different_devices_do_not_disturb_each_other) {
    makeColorBoard();
    std::atomic<int> next{0};
    EXPECT_TRUE(runThreads(5, [&next](int) {
        thread_local const int mine = next++;
        switch (mine) {
            case 0:
                return device().setIntensity(50, DisplayBacklight) == 0;
            case 1:
                return device().setIntensity(50, KeyBacklight) == 0;
            case 2:
                return device().setColor(50, EncoderBacklight) == 0;
            case 3:
                return device().setColor(50, RGBLED) == 0;
            default:
                return device().setIntensity(50, Beeper) == 0;
        }
    }));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableThreads, a_failure_of_one_device_may_meet_the_use_of_the_display) {
    makeBoard();
    makeFile(beeperFile, "");
    EXPECT_TRUE(runThreads(4, [](int round) {
        if (round % 2 == 0)
            return getIntensity(Beeper).result == 5;
        return device().setIntensity(50, DisplayBacklight) == 0;
    }));
}

}  // namespace
}  // namespace ZR::test
