#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>
#include <vector>

#include "hardware/can/zr_can_raw.h"
#include "tests/support/output_capture.h"
#include "tests/support/private_root.h"
#include "tests/support/report_log.h"

namespace ZR::test {
namespace {

constexpr int untouched = 4711;

std::string counter(const std::string& interface, const std::string& name) {
    return "/sys/class/net/" + interface + "/statistics/" + name;
}

/// Result and count.
using Counted = std::pair<unsigned int, int>;

Counted received(unsigned int port) {
    int count = untouched;
    const unsigned int result = ZRCANRaw::getRxPackages(port, count);
    return {result, count};
}

Counted sent(unsigned int port) {
    int count = untouched;
    const unsigned int result = ZRCANRaw::getTxPackages(port, count);
    return {result, count};
}

/// What a counter file with this content gives, both ways.
Counted counted(const std::string& content) {
    makeFile(counter("can0", "rx_packets"), content);
    makeFile(counter("can0", "tx_packets"), content);
    const Counted both = received(1);
    EXPECT_EQ(sent(1), both) << content;
    return both;
}

class CanStatistics : public testing::Test {
  protected:
    CanStatistics() { removeFile("/sys/class/net"); }
};

TEST_F(CanStatistics, a_counter_file_holding_12345_gives_12345_and_status_0) {
    EXPECT_EQ(counted("12345\n"), (Counted{0, 12345}));
    EXPECT_EQ(counted("12345"), (Counted{0, 12345}));
}

TEST_F(CanStatistics, received_and_sent_frames_are_two_counters) {
    makeFile(counter("can1", "rx_packets"), "7\n");
    makeFile(counter("can1", "tx_packets"), "8\n");
    EXPECT_EQ(received(2), (Counted{0, 7}));
    EXPECT_EQ(sent(2), (Counted{0, 8}));
}

TEST_F(CanStatistics, port_n_is_the_interface_with_the_number_before) {
    for (int i = 0; i < 4; ++i) {
        makeFile(counter("can" + std::to_string(i), "rx_packets"), std::to_string(10 + i) + '\n');
        makeFile(counter("can" + std::to_string(i), "tx_packets"), std::to_string(20 + i) + '\n');
    }
    for (unsigned int port = 1; port <= 4; ++port) {
        EXPECT_EQ(received(port), (Counted{0, static_cast<int>(9 + port)}));
        EXPECT_EQ(sent(port), (Counted{0, static_cast<int>(19 + port)}));
    }
}

TEST_F(CanStatistics, port_5_returns_20_also_when_there_is_such_an_interface) {
    makeFile(counter("can4", "rx_packets"), "1\n");
    makeFile(counter("can4", "tx_packets"), "1\n");
    for (const unsigned int port : {5U, 6U, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(received(port), (Counted{20, untouched})) << port;
        EXPECT_EQ(sent(port), (Counted{20, untouched})) << port;
    }
}

TEST_F(CanStatistics, port_0_passes_the_range_check_and_returns_2) {
    makeFile(counter("can0", "rx_packets"), "1\n");
    EXPECT_EQ(received(0), (Counted{2, untouched}));
    EXPECT_EQ(sent(0), (Counted{2, untouched}));
}

TEST_F(CanStatistics, port_0_is_the_interface_can_minus_1) {
    makeFile(counter("can-1", "rx_packets"), "5\n");
    makeFile(counter("can-1", "tx_packets"), "6\n");
    EXPECT_EQ(received(0), (Counted{0, 5}));
    EXPECT_EQ(sent(0), (Counted{0, 6}));
}

TEST_F(CanStatistics, a_missing_interface_returns_2_and_leaves_the_count) {
    EXPECT_EQ(received(1), (Counted{2, untouched}));
    EXPECT_EQ(sent(4), (Counted{2, untouched}));
}

TEST_F(CanStatistics, decimal_hexadecimal_and_octal_forms_are_taken) {
    EXPECT_EQ(counted("0\n"), (Counted{0, 0}));
    EXPECT_EQ(counted("0x1F\n"), (Counted{0, 31}));
    EXPECT_EQ(counted("0X1f\n"), (Counted{0, 31}));
    EXPECT_EQ(counted("017\n"), (Counted{0, 15}));
    EXPECT_EQ(counted("  42\n"), (Counted{0, 42}));
    EXPECT_EQ(counted("-3\n"), (Counted{0, -3}));
    EXPECT_EQ(counted("+3\n"), (Counted{0, 3}));
}

TEST_F(CanStatistics, a_number_counts_up_to_its_first_foreign_character) {
    EXPECT_EQ(counted("12 34\n"), (Counted{0, 12}));
    EXPECT_EQ(counted("12abc"), (Counted{0, 12}));
    EXPECT_EQ(counted("089\n"), (Counted{0, 0}));
    EXPECT_EQ(counted("0x\n"), (Counted{0, 0}));
    EXPECT_EQ(counted(std::string("12\0"
                                  "34\n",
                                  6)),
              (Counted{0, 12}));
}

TEST_F(CanStatistics, what_is_no_number_gives_0_with_status_0) {
    EXPECT_EQ(counted(""), (Counted{0, 0}));
    EXPECT_EQ(counted("\n"), (Counted{0, 0}));
    EXPECT_EQ(counted("none\n"), (Counted{0, 0}));
    EXPECT_EQ(counted(" \t\n"), (Counted{0, 0}));
}

TEST_F(CanStatistics, only_the_first_line_counts) {
    EXPECT_EQ(counted("1\n2\n3\n"), (Counted{0, 1}));
    EXPECT_EQ(counted("\n5\n"), (Counted{0, 0}));
    EXPECT_EQ(counted("  \n5\n"), (Counted{0, 0}));
}

TEST_F(CanStatistics, a_line_is_cut_at_31_characters) {
    EXPECT_EQ(counted(std::string(30, ' ') + "123\n"), (Counted{0, 1}));
    EXPECT_EQ(counted(std::string(31, ' ') + "123\n"), (Counted{0, 0}));
    EXPECT_EQ(counted("0x" + std::string(28, '0') + "1f\n"), (Counted{0, 1}));
    EXPECT_EQ(counted(std::string(5000, '0') + "7\n"), (Counted{0, 0}));
}

TEST_F(CanStatistics, a_count_beyond_an_int_is_cut_to_its_low_bits) {
    if (sizeof(long) == 4)
        GTEST_SKIP() << "a long number is no longer than an int here";
    EXPECT_EQ(counted("2147483647\n"), (Counted{0, INT_MAX}));
    EXPECT_EQ(counted("2147483648\n"), (Counted{0, INT_MIN}));
    EXPECT_EQ(counted("4294967295\n"), (Counted{0, -1}));
    EXPECT_EQ(counted("4294967297\n"), (Counted{0, 1}));
    EXPECT_EQ(counted("99999999999999999999\n"), (Counted{0, -1}));
}

TEST_F(CanStatistics, a_folder_in_the_place_of_the_file_gives_0_with_status_0) {
    makeFolder(counter("can0", "rx_packets"));
    makeFolder(counter("can0", "tx_packets"));
    EXPECT_EQ(received(1), (Counted{0, 0}));
    EXPECT_EQ(sent(1), (Counted{0, 0}));
}

TEST_F(CanStatistics, each_call_looks_anew) {
    EXPECT_EQ(counted("1\n"), (Counted{0, 1}));
    EXPECT_EQ(counted("2\n"), (Counted{0, 2}));
    removeFile(counter("can0", "rx_packets"));
    EXPECT_EQ(received(1), (Counted{2, untouched}));
}

TEST_F(CanStatistics, reports_and_prints_nothing) {
    const ReportLog log;
    const OutputCapture capture;
    (void)counted("none\n");
    (void)received(2);
    (void)sent(5);
    EXPECT_EQ(capture.output() + capture.errors(), "");
    EXPECT_EQ(log.reports(), std::vector<Report>{});
}

}  // namespace
}  // namespace ZR::test
