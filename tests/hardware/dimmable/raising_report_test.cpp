#include <stdexcept>
#include <string>
#include <vector>

#include "common/zrapi_common/zr_debug.h"
#include "tests/hardware/dimmable/dimmable_board.h"
#include "tests/support/private_root.h"

// A debug facility that raises must not break a result code.

namespace ZR::test {
namespace {

std::vector<std::string> seen;

/// Raises on the first report only.
void raiseOnce(int /*level*/, const char* /*section*/, const char* message) {
    seen.emplace_back(message);
    if (seen.size() == 1)
        throw std::runtime_error("sink");
}

class DimmableRaisingReport : public testing::Test {
  protected:
    DimmableRaisingReport() { ZRDebug::setSink(raiseOnce); }
    ~DimmableRaisingReport() override { ZRDebug::setSink(nullptr); }
};

using Texts = std::vector<std::string>;

TEST_F(DimmableRaisingReport, makes_a_refused_range_a_failed_write) {
    makeBoard();
    EXPECT_EQ(ZRDimmable::getInstance()->setIntensity(101, KeyBacklight), 6U);
    EXPECT_EQ(seen, (Texts{"Intensity out of range for device 1, requested: 101",
                           "Writing intensity to device file 1"}));
}

TEST_F(DimmableRaisingReport, makes_getColor_report_without_the_device) {
    makeBoard();
    (void)ZRDimmable::getInstance();
    makeFile(rgbFile, "");
    EXPECT_EQ(getColor(RGBLED), (Reading{5, untouched}));
    EXPECT_EQ(seen, (Texts{"Reading from LED device file 3", "Reading from LED device file"}));
}

TEST_F(DimmableRaisingReport, never_leaves_setIntensity_or_setColor) {
    makeBoard();
    (void)ZRDimmable::getInstance();
    const RefusedWrites refused;
    EXPECT_EQ(ZRDimmable::getInstance()->setIntensity(50, Beeper), 6U);
    seen.clear();
    EXPECT_EQ(ZRDimmable::getInstance()->setColor(1, RGBLED), 6U);
}

}  // namespace
}  // namespace ZR::test
