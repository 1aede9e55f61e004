#include <string>

#include "hardware/dimmable/zr_dimmable.h"
#include "tests/hardware/costs/operation_cost.h"
#include "tests/support/allocation_counter.h"
#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

constexpr char displayBrightness[] = "/sys/class/backlight/backlight/brightness";
constexpr char keyBrightness[] = "/sys/class/leds/bl:key/brightness";
constexpr char encoderBrightness[] = "/sys/class/leds/bl:enc/brightness";
constexpr char rgbBrightness[] = "/sys/class/leds/user:rgb/brightness";
constexpr char beeperVolume[] = "/sys/bus/platform/devices/pwm-speaker.0/volume";

/// A board with a plain key LED and an encoder LED with colour.
class DimmableCost : public CostTest {
  protected:
    void SetUp() override {
        CostTest::SetUp();
        makeFile(displayBrightness, "128\n");
        makeFile(keyBrightness, "255\n");
        makeFile("/sys/class/leds/bl:key/max_brightness", "255\n");
        makeFile(encoderBrightness, "3430008\n");
        makeFile("/sys/class/leds/bl:enc/max_brightness", "16777215\n");
        makeFile(rgbBrightness, "16777215\n");
        makeFile(beeperVolume, "50\n");
    }
};

Operation setIntensity(unsigned int intensity, ZRDimmableDevice device) {
    ZRDimmable* const devices = ZRDimmable::getInstance();
    return [=] { return devices->setIntensity(intensity, device); };
}

Operation getIntensity(ZRDimmableDevice device) {
    ZRDimmable* const devices = ZRDimmable::getInstance();
    return [=] {
        unsigned int intensity = 0;
        return devices->getIntensity(&intensity, device);
    };
}

Operation setColor(unsigned int color, ZRDimmableDevice device) {
    ZRDimmable* const devices = ZRDimmable::getInstance();
    return [=] { return devices->setColor(color, device); };
}

Operation getColor(ZRDimmableDevice device) {
    ZRDimmable* const devices = ZRDimmable::getInstance();
    return [=] {
        unsigned int color = 0;
        return devices->getColor(&color, device);
    };
}

/// The value and its line end reach the driver in one write.
void expectOneWrite(const OperationCost& cost, const std::string& text) {
    EXPECT_EQ(cost.result, "0");
    ASSERT_EQ(cost.calls(), "lseek write");
    EXPECT_EQ(cost.trace.calls[0].result, 0);
    EXPECT_EQ(cost.trace.calls[1].text, text);
    EXPECT_EQ(cost.allocations, 0U);
}

void expectOneRead(const OperationCost& cost, const std::string& text) {
    EXPECT_EQ(cost.result, "0");
    ASSERT_EQ(cost.calls(), "lseek read");
    EXPECT_EQ(cost.trace.calls[0].result, 0);
    EXPECT_EQ(cost.trace.calls[1].text, text);
    EXPECT_EQ(cost.allocations, 0U);
}

TEST_F(DimmableCost, setIntensity_takes_a_seek_a_write_and_no_heap) {
    expectOneWrite(costOf(setIntensity(100, DisplayBacklight)), "255\n");
    expectOneWrite(costOf(setIntensity(50, KeyBacklight)), "128\n");
    expectOneWrite(costOf(setIntensity(0xFFFFFF, EncoderBacklight)), "16777215\n");
    expectOneWrite(costOf(setIntensity(0, Beeper)), "0\n");
}

TEST_F(DimmableCost, getIntensity_takes_a_seek_a_read_and_no_heap) {
    expectOneRead(costOf(getIntensity(DisplayBacklight)), "128\n");
    expectOneRead(costOf(getIntensity(KeyBacklight)), "255\n");
    expectOneRead(costOf(getIntensity(EncoderBacklight)), "3430008\n");
    expectOneRead(costOf(getIntensity(Beeper)), "50\n");
}

TEST_F(DimmableCost, setColor_takes_a_seek_a_write_and_no_heap) {
    expectOneWrite(costOf(setColor(0x12345678, RGBLED)), "3430008\n");
    expectOneWrite(costOf(setColor(0x345678, EncoderBacklight)), "3430008\n");
    expectOneWrite(costOf(setColor(100, KeyBacklight)), "255\n");
}

TEST_F(DimmableCost, getColor_takes_a_seek_a_read_and_no_heap) {
    expectOneRead(costOf(getColor(RGBLED)), "16777215\n");
    expectOneRead(costOf(getColor(EncoderBacklight)), "3430008\n");
}

TEST_F(DimmableCost, reading_a_display_below_its_minimum_takes_four_calls_and_no_heap) {
    const Operation read = getIntensity(DisplayBacklight);
    makeFile(displayBrightness, "3\n");
    const OperationCost cost = costOfFirst(read);
    EXPECT_EQ(cost.result, "0");
    ASSERT_EQ(cost.calls(), "lseek read lseek write");
    EXPECT_EQ(cost.trace.calls[1].text, "3\n");
    EXPECT_EQ(cost.trace.calls[3].text, "13\n");
    makeFile(displayBrightness, "3\n");
    const AllocationCounter allocations;
    (void)read();
    EXPECT_EQ(allocations.count(), 0U);
    EXPECT_EQ(readFile(displayBrightness), "13\n");
}

TEST_F(DimmableCost, what_is_refused_without_asking_the_driver_takes_no_call_at_all) {
    const OperationCost set = costOf(setIntensity(50, RGBLED));
    const OperationCost get = costOf(getColor(KeyBacklight));
    EXPECT_EQ(set.result, "10");
    EXPECT_EQ(set.calls(), "");
    EXPECT_EQ(set.allocations, 0U);
    EXPECT_EQ(get.result, "11");
    EXPECT_EQ(get.calls(), "");
    EXPECT_EQ(get.allocations, 0U);
}

}  // namespace
}  // namespace ZR::test
