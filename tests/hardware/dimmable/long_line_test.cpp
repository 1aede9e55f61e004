#include <sys/syscall.h>

#include <cerrno>
#include <string>

#include "tests/hardware/dimmable/dimmable_board.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

// No driver gives more than a page. A longer line is read to its line end like any line, and what
// its first page holds is the value.

namespace ZR::test {
namespace {

using DimmableLongLine = DimmableTest;

constexpr std::size_t page = 4096;

/// A line of @p size characters before its line end, which starts with 255.
std::string lineOf(std::size_t size) {
    return "255 " + std::string(size - 4, 'x') + '\n';
}

TEST_F(DimmableLongLine, of_a_whole_page_is_a_line_like_any) {
    makeBoard();
    makeFile(keyFile, std::string(page - 4, ' ') + "255\n");
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 100}));
    EXPECT_TRUE(Inside::stream(KeyBacklight).good());
}

TEST_F(DimmableLongLine, with_its_line_end_is_a_good_value) {
    makeBoard();
    for (const std::size_t size : {page - 1, page, page + 1, page + 255, page + 256, 3 * page}) {
        makeFile(keyFile, lineOf(size));
        EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 100})) << size;
        EXPECT_TRUE(Inside::stream(KeyBacklight).good()) << size;
        makeFile(rgbFile, lineOf(size));
        EXPECT_EQ(getColor(RGBLED), (Reading{0, 255})) << size;
    }
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableLongLine, counts_by_its_first_page_only) {
    makeBoard();
    // Built first: the probe of this LED takes no such line for a number.
    (void)device();
    makeFile(rgbFile, std::string(page - 1, ' ') + "12\n");
    EXPECT_EQ(getColor(RGBLED), (Reading{0, 1}));
    makeFile(rgbFile, std::string(page, ' ') + "12\n");
    EXPECT_EQ(getColor(RGBLED), (Reading{0, 0}));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableLongLine, without_a_line_end_is_an_intensity_at_the_end_of_its_file) {
    makeBoard();
    makeFile(keyFile, "255 " + std::string(page, 'x'));
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 100}));
    EXPECT_FALSE(Inside::stream(KeyBacklight).good());
    EXPECT_EQ(getIntensity(KeyBacklight), (Reading{0, 100}));
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(DimmableLongLine, without_a_line_end_is_no_colour) {
    makeBoard();
    // Built first: the probe of this LED takes no such line for a number.
    (void)device();
    makeFile(rgbFile, "255 " + std::string(page, 'x'));
    EXPECT_EQ(getColor(RGBLED), (Reading{5, untouched}));
    EXPECT_EQ(reports(), Reports{report("Reading from LED device file 3")});
    makeFile(rgbFile, lineOf(2 * page));
    EXPECT_EQ(getColor(RGBLED), (Reading{0, 255}));
}

TEST_F(DimmableLongLine, that_cannot_be_read_to_its_end_is_a_failed_read) {
    if (!whyNotTraceable().empty())
        GTEST_SKIP() << whyNotTraceable();
    makeBoard();
    makeFile(keyFile, lineOf(2 * page));
    for (const std::size_t nth : {2U, 3U}) {
        const Trace trace = traceSystemCalls(
            [](TracedRun& run) {
                (void)ZRDimmable::getInstance();
                run.begin();
                const Reading reading = getIntensity(KeyBacklight);
                run.end();
                run.say(std::to_string(reading.result) + ' ' + std::to_string(reading.value));
            },
            {{}, {{SYS_read, nth, EIO, 0}}});
        EXPECT_EQ(trace.text, "5 " + std::to_string(untouched));
        EXPECT_EQ(trace.count("read"), nth);
    }
}

}  // namespace
}  // namespace ZR::test
