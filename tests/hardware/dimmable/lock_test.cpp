#include <algorithm>
#include <system_error>
#include <vector>

#include "tests/hardware/dimmable/dimmable_board.h"
#include "tests/support/private_root.h"
#include "tests/support/substitutes/mutex_substitute.h"

namespace ZR::test {
namespace {

/// One lock or unlock of one of the three mutexes, as a word.
std::string word(const MutexCall& call) {
    const std::string name = call.mutex == Inside::ledLock()       ? "led"
                             : call.mutex == Inside::beeperLock()  ? "beeper"
                             : call.mutex == Inside::displayLock() ? "display"
                                                                   : "";
    if (name.empty())
        return {};
    return (call.operation == MutexOperation::Lock ? "+" : "-") + name;
}

/// What @p function locks and unlocks, for instance "+display -display".
template <typename Function>
std::string locksOf(Function function) {
    MutexSubstitute::calls.clear();
    MutexSubstitute::recording = true;
    function();
    MutexSubstitute::recording = false;
    std::string text;
    for (const MutexCall& call : MutexSubstitute::calls)
        if (const std::string each = word(call); !each.empty())
            text += (text.empty() ? "" : " ") + each;
    return text;
}

class DimmableLocks : public DimmableTest {
  protected:
    ~DimmableLocks() override { MutexSubstitute::refused = nullptr; }
};

TEST_F(DimmableLocks, building_takes_led_beeper_display_and_gives_them_back_in_that_order) {
    makeBoard();
    EXPECT_EQ(locksOf([] { (void)ZRDimmable::getInstance(); }),
              "+led +beeper +display -led -beeper -display");
}

TEST_F(DimmableLocks, building_locks_also_when_nothing_can_be_opened) {
    OutputCapture capture;
    EXPECT_EQ(locksOf([] { (void)ZRDimmable::getInstance(); }),
              "+led +beeper +display -led -beeper -display");
}

TEST_F(DimmableLocks, each_intensity_takes_its_own_lock) {
    makeBoard();
    (void)device();
    EXPECT_EQ(locksOf([] { (void)getIntensity(DisplayBacklight); }), "+display -display");
    EXPECT_EQ(locksOf([] { (void)getIntensity(Beeper); }), "+beeper -beeper");
    EXPECT_EQ(locksOf([] { (void)device().setIntensity(50, DisplayBacklight); }),
              "+display -display");
    EXPECT_EQ(locksOf([] { (void)device().setIntensity(50, Beeper); }), "+beeper -beeper");
}

TEST_F(DimmableLocks, key_and_encoder_take_no_lock) {
    makeColorBoard();
    (void)device();
    for (const ZRDimmableDevice each : {KeyBacklight, EncoderBacklight}) {
        EXPECT_EQ(locksOf([each] { (void)getIntensity(each); }), "");
        EXPECT_EQ(locksOf([each] { (void)device().setIntensity(50, each); }), "");
        EXPECT_EQ(locksOf([each] { (void)getColor(each); }), "");
        EXPECT_EQ(locksOf([each] { (void)device().setColor(50, each); }), "");
    }
}

TEST_F(DimmableLocks, colours_of_the_rgb_led_take_the_led_lock) {
    makeBoard();
    (void)device();
    EXPECT_EQ(locksOf([] { (void)getColor(RGBLED); }), "+led -led");
    EXPECT_EQ(locksOf([] { (void)device().setColor(1, RGBLED); }), "+led -led");
}

TEST_F(DimmableLocks, an_invalid_device_takes_no_lock) {
    makeBoard();
    (void)device();
    EXPECT_EQ(locksOf([] {
                  (void)getIntensity(RGBLED);
                  (void)getIntensity(unknownDevice);
                  (void)device().setIntensity(1, RGBLED);
                  (void)device().setIntensity(1, unknownDevice);
                  (void)getColor(DisplayBacklight);
                  (void)device().setColor(1, Beeper);
              }),
              "");
}

TEST_F(DimmableLocks, reading_a_dark_display_gives_the_lock_back_before_it_sets) {
    makeBoard();
    makeFile(platformDisplay, "3\n");
    (void)device();
    EXPECT_EQ(locksOf([] { (void)getIntensity(DisplayBacklight); }),
              "+display -display +display -display");
}

TEST_F(DimmableLocks, every_failing_path_gives_the_lock_back) {
    makeBoard();
    (void)device();
    EXPECT_EQ(locksOf([] { (void)device().setIntensity(101, DisplayBacklight); }),
              "+display -display");
    EXPECT_EQ(locksOf([] {
                  const RefusedWrites refused;
                  (void)device().setIntensity(50, Beeper);
                  (void)device().setColor(1, RGBLED);
              }),
              "+beeper -beeper +led -led");
    makeFile(beeperFile, "");
    makeFile(rgbFile, "");
    EXPECT_EQ(locksOf([] {
                  (void)getIntensity(Beeper);
                  (void)getColor(RGBLED);
              }),
              "+beeper -beeper +led -led");
}

TEST_F(DimmableLocks, a_device_that_is_not_open_gives_the_lock_back) {
    (void)outputOfBuilding();
    EXPECT_EQ(locksOf([] {
                  (void)getIntensity(DisplayBacklight);
                  (void)device().setIntensity(50, Beeper);
                  (void)getColor(RGBLED);
                  (void)device().setColor(1, RGBLED);
              }),
              "+display -display +beeper -beeper +led -led +led -led");
}

TEST_F(DimmableLocks, a_display_lock_that_cannot_be_taken_leaves_as_a_system_error) {
    makeBoard();
    (void)device();
    MutexSubstitute::refused = Inside::displayLock();
    unsigned int value = untouched;
    EXPECT_THROW((void)device().getIntensity(&value, DisplayBacklight), std::system_error);
    EXPECT_THROW((void)device().setIntensity(50, DisplayBacklight), std::system_error);
    EXPECT_THROW((void)device().setMinDisplayBacklightIntensity(50), std::system_error);
    EXPECT_THROW((void)device().getMinDisplayBacklightIntensity(&value), std::system_error);
    EXPECT_EQ(readFile(platformDisplay), "128\n");
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableLocks, a_beeper_lock_that_cannot_be_taken_leaves_as_a_system_error) {
    makeBoard();
    (void)device();
    MutexSubstitute::refused = Inside::beeperLock();
    unsigned int value = untouched;
    EXPECT_THROW((void)device().getIntensity(&value, Beeper), std::system_error);
    EXPECT_THROW((void)device().setIntensity(50, Beeper), std::system_error);
    EXPECT_EQ(value, untouched);
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableLocks, setColor_lets_the_exception_of_the_led_lock_pass) {
    makeBoard();
    (void)device();
    MutexSubstitute::refused = Inside::ledLock();
    EXPECT_THROW((void)device().setColor(1, RGBLED), std::system_error);
    EXPECT_EQ(readFile(rgbFile), "128\n");
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableLocks, getColor_reports_the_exception_of_the_led_lock_and_answers_5) {
    makeBoard();
    (void)device();
    MutexSubstitute::refused = Inside::ledLock();
    EXPECT_EQ(getColor(RGBLED), (Reading{5, untouched}));
    EXPECT_EQ(reports(), Reports{report("Reading from LED device file")});
}

TEST_F(DimmableLocks, each_operation_works_again_once_the_lock_can_be_taken) {
    makeBoard();
    (void)device();
    MutexSubstitute::refused = Inside::displayLock();
    EXPECT_THROW((void)device().setIntensity(50, DisplayBacklight), std::system_error);
    MutexSubstitute::refused = nullptr;
    EXPECT_EQ(device().setIntensity(50, DisplayBacklight), 0U);
    MutexSubstitute::refused = Inside::ledLock();
    EXPECT_EQ(getColor(RGBLED).result, 5U);
    MutexSubstitute::refused = nullptr;
    EXPECT_EQ(getColor(RGBLED), (Reading{0, 128}));
}

}  // namespace
}  // namespace ZR::test
