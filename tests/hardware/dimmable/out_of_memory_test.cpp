#include "tests/hardware/dimmable/dimmable_board.h"
#include "tests/support/private_root.h"
#include "tests/support/substitutes/operator_new_substitute.h"

// An operation needs memory only to raise a failure. Where there is none, what it meets is no
// stream failure any more, and its result code must stay the same.

namespace ZR::test {
namespace {

class DimmableOutOfMemory : public DimmableTest {
  protected:
    DimmableOutOfMemory() {
        makeColorBoard();
        (void)device();
    }

    /// The answer of @p operation, whose first need of memory is not met.
    template <typename Operation>
    static auto withoutMemory(Operation operation) {
        OperatorNewSubstitute::failNext = true;
        const auto answer = operation();
        EXPECT_FALSE(OperatorNewSubstitute::failNext) << "no memory was needed";
        OperatorNewSubstitute::failNext = false;
        return answer;
    }
};

TEST_F(DimmableOutOfMemory, getIntensity_names_any_other_exception) {
    makeFile(encoderFile, "");
    EXPECT_EQ(withoutMemory([] { return getIntensity(EncoderBacklight); }),
              (Reading{5, untouched}));
    EXPECT_EQ(reports(), Reports{report("Reading from display backlight device file "
                                        "(std::exception) 2")});
    makeFile(encoderFile, "9\n");
    EXPECT_EQ(getIntensity(EncoderBacklight), (Reading{0, 9}));
}

TEST_F(DimmableOutOfMemory, getIntensity_clears_the_displays_stream) {
    makeFile(platformDisplay, "");
    EXPECT_EQ(withoutMemory([] { return getIntensity(DisplayBacklight); }),
              (Reading{5, untouched}));
    EXPECT_TRUE(Inside::stream(DisplayBacklight).good());
}

TEST_F(DimmableOutOfMemory, setIntensity_answers_6) {
    {
        const RefusedWrites refused;
        EXPECT_EQ(withoutMemory([] { return device().setIntensity(50, Beeper); }), 6U);
    }
    EXPECT_EQ(reports(), Reports{report("Writing intensity to device file 4")});
    EXPECT_EQ(device().setIntensity(50, Beeper), 0U);
}

TEST_F(DimmableOutOfMemory, getColor_answers_5) {
    makeFile(rgbFile, "");
    EXPECT_EQ(withoutMemory([] { return getColor(RGBLED); }), (Reading{5, untouched}));
    const Report expected = report("Reading from LED device file 3");
    EXPECT_EQ(reports(), (Reports{expected, expected}));
    makeFile(rgbFile, "9\n");
    EXPECT_EQ(getColor(RGBLED), (Reading{0, 9}));
}

TEST_F(DimmableOutOfMemory, setColor_answers_6) {
    {
        const RefusedWrites refused;
        EXPECT_EQ(withoutMemory([] { return device().setColor(7, RGBLED); }), 6U);
    }
    EXPECT_EQ(reports(), Reports{report("WRITING LED device file")});
    EXPECT_EQ(device().setColor(7, RGBLED), 0U);
}

}  // namespace
}  // namespace ZR::test
