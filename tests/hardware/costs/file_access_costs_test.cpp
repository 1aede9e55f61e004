#include <cerrno>
#include <string>

#include "common/zrapi_utility/zr_file_access.h"
#include "tests/hardware/costs/operation_cost.h"
#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

class FileAccessCost : public CostTest {
  protected:
    const std::string attribute_ = "/sys/class/analog/light/value";
};

TEST_F(FileAccessCost, readIntegerFromFile_takes_open_read_close_and_no_heap) {
    makeFile(attribute_, "12345\n");
    const OperationCost cost = costOf([this] {
        int value = -1;
        return static_cast<unsigned int>(readIntegerFromFile(attribute_, &value)) +
               (value == 12345 ? 0U : 1U);
    });
    EXPECT_EQ(cost.result, "0");
    EXPECT_EQ(cost.calls(), "openat read close");
    EXPECT_EQ(cost.allocations, 0U);
}

TEST_F(FileAccessCost, readIntegerFromFile_reads_once_more_when_the_line_end_is_missing) {
    makeFile(attribute_, "12345");
    const OperationCost cost = costOf([this] {
        int value = -1;
        return static_cast<unsigned int>(readIntegerFromFile(attribute_, &value));
    });
    EXPECT_EQ(cost.result, "0");
    EXPECT_EQ(cost.calls(), "openat read read close");
    EXPECT_EQ(cost.allocations, 0U);
}

TEST_F(FileAccessCost, readIntegerFromFile_of_a_missing_file_takes_one_call) {
    const OperationCost cost = costOf([this] {
        int value = -1;
        return readIntegerFromFile(attribute_, &value) == ENOENT ? 0U : 1U;
    });
    EXPECT_EQ(cost.result, "0");
    EXPECT_EQ(cost.calls(), "openat");
    EXPECT_EQ(cost.allocations, 0U);
}

TEST_F(FileAccessCost, readStringFromFile_of_a_short_line_takes_open_read_close_and_no_heap) {
    makeFile(attribute_, "enabled\n");
    std::string text;
    const OperationCost cost = costOf(
        [this, &text] { return static_cast<unsigned int>(readStringFromFile(attribute_, &text)); });
    EXPECT_EQ(cost.result, "0");
    EXPECT_EQ(cost.calls(), "openat read close");
    EXPECT_EQ(cost.allocations, 0U);
}

TEST_F(FileAccessCost, writeToFile_takes_open_write_close_and_no_heap) {
    makeFile(attribute_, "0\n");
    const OperationCost cost = costOf(
        [this] { return static_cast<unsigned int>(writeToFile(attribute_, -2147483647 - 1)); });
    EXPECT_EQ(cost.result, "0");
    EXPECT_EQ(cost.calls(), "openat write close");
    EXPECT_EQ(cost.trace.calls.at(1).text, "-2147483648");
    EXPECT_EQ(cost.allocations, 0U);
}

}  // namespace
}  // namespace ZR::test
