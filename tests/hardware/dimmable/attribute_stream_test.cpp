#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <functional>
#include <ios>
#include <string>

#include "hardware/dimmable/attribute_stream.h"
#include "tests/support/private_root.h"
#include "tests/support/system_call_tracer.h"

// What the dimmable devices never ask of their streams, or do not show of them.

namespace ZR::test {
namespace {

constexpr char path[] = "/sys/class/leds/one/brightness";
constexpr char otherPath[] = "/sys/class/leds/other/brightness";

std::string lineOf(AttributeStream& stream) {
    AttributeStream::Line line{"unread"};
    stream.readLine(line);
    return line.data();
}

class AttributeStreams : public testing::Test {
  protected:
    AttributeStreams() {
        makeFile(path, "one\n");
        makeFile(otherPath, "other\n");
    }
};

TEST_F(AttributeStreams, is_good_and_not_open_at_first) {
    const AttributeStream stream;
    EXPECT_TRUE(stream.good());
    EXPECT_FALSE(stream.is_open());
    EXPECT_EQ(stream.exceptions(), std::ios_base::goodbit);
}

TEST_F(AttributeStreams, a_missing_file_is_a_failure_that_the_next_open_forgets) {
    AttributeStream stream;
    stream.open("/sys/class/leds/missing/brightness");
    EXPECT_FALSE(stream.good());
    EXPECT_FALSE(stream.is_open());
    stream.open(path);
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(lineOf(stream), "one");
}

TEST_F(AttributeStreams, an_open_one_keeps_its_file_when_it_is_opened_again) {
    AttributeStream stream;
    stream.open(path);
    stream.open(otherPath);
    EXPECT_FALSE(stream.good());
    stream.clear();
    EXPECT_EQ(lineOf(stream), "one");
}

TEST_F(AttributeStreams, a_closed_one_can_be_opened_on_another_file) {
    AttributeStream stream;
    stream.open(path);
    stream.close();
    EXPECT_TRUE(stream.good());
    EXPECT_FALSE(stream.is_open());
    stream.open(otherPath);
    EXPECT_EQ(lineOf(stream), "other");
}

TEST_F(AttributeStreams, a_close_of_nothing_is_a_failure) {
    AttributeStream stream;
    stream.close();
    EXPECT_FALSE(stream.good());
}

TEST_F(AttributeStreams, a_failure_raises_only_what_was_asked_for) {
    AttributeStream stream;
    stream.exceptions(std::ios_base::badbit);
    EXPECT_NO_THROW(stream.close());
    stream.exceptions(std::ios_base::failbit);
    EXPECT_THROW(stream.close(), std::ios_base::failure);
}

TEST_F(AttributeStreams, one_that_is_not_good_neither_writes_nor_reads) {
    AttributeStream stream;
    stream.open(path);
    stream.open(otherPath);
    stream.writeLine("new\n");
    EXPECT_EQ(readFile(path), "one\n");
    EXPECT_EQ(lineOf(stream), "");
    stream.clear();
    EXPECT_EQ(lineOf(stream), "one");
}

TEST_F(AttributeStreams, a_line_without_its_end_is_there_and_leaves_a_state) {
    makeFile(path, "one");
    AttributeStream stream;
    stream.open(path);
    EXPECT_EQ(lineOf(stream), "one");
    EXPECT_FALSE(stream.good());
}

TEST_F(AttributeStreams, a_refused_line_is_bad_and_not_only_failed) {
    makeDeviceNode("/sys/full", "full");
    AttributeStream stream;
    stream.open("/sys/full");
    stream.exceptions(std::ios_base::failbit);
    EXPECT_NO_THROW(stream.writeLine("new\n"));
    stream.clear();
    stream.exceptions(std::ios_base::badbit);
    EXPECT_THROW(stream.writeLine("new\n"), std::ios_base::failure);
}

TEST_F(AttributeStreams, keeps_an_earlier_state_beside_a_later_one) {
    makeDeviceNode("/sys/full", "full");
    AttributeStream stream;
    stream.open("/sys/full");
    stream.writeLine("refused\n");
    stream.writeLine("not good any more\n");
    stream.exceptions(std::ios_base::badbit);
    EXPECT_THROW(stream.writeLine("bad still\n"), std::ios_base::failure);
}

/// "good" or "bad", then "open" or "closed".
std::string wordsOf(const AttributeStream& stream) {
    return std::string(stream.good() ? "good " : "bad ") + (stream.is_open() ? "open" : "closed");
}

/// What is left of a stream after @p operation under @p fault.
Trace traceOperation(const std::function<void(AttributeStream&)>& operation,
                     const NumberedFault& fault) {
    return traceSystemCalls(
        [&operation](TracedRun& run) {
            AttributeStream stream;
            stream.open(path);
            run.begin();
            operation(stream);
            run.end();
            run.say(wordsOf(stream));
        },
        {{}, {fault}});
}

class AttributeStreamCalls : public AttributeStreams {
  protected:
    void SetUp() override {
        if (!whyNotTraceable().empty())
            GTEST_SKIP() << whyNotTraceable();
    }
};

TEST_F(AttributeStreamCalls, a_failed_close_is_a_failure_and_lets_the_file_go) {
    const auto close = [](AttributeStream& stream) { stream.close(); };
    EXPECT_EQ(traceOperation(close, {SYS_close, 1, EIO, 0}).text, "bad closed");
}

TEST_F(AttributeStreamCalls, an_interrupted_close_has_closed_and_is_not_repeated) {
    const auto close = [](AttributeStream& stream) { stream.close(); };
    const Trace trace = traceOperation(close, {SYS_close, 1, EINTR, 0});
    EXPECT_EQ(trace.text, "good closed");
    EXPECT_EQ(trace.count("close"), 1U);
}

TEST_F(AttributeStreamCalls, a_driver_that_takes_nothing_has_refused) {
    const auto write = [](AttributeStream& stream) { stream.writeLine("new\n"); };
    const Trace trace = traceOperation(write, {SYS_write, 1, 0, 0});
    EXPECT_EQ(trace.text, "bad open");
    EXPECT_EQ(trace.count("write"), 1U);
}

TEST_F(AttributeStreamCalls, a_value_that_the_driver_takes_in_pieces_arrives_whole) {
    const auto write = [](AttributeStream& stream) { stream.writeLine("new\n"); };
    const Trace trace = traceOperation(write, {SYS_write, 1, 0, 1});
    EXPECT_EQ(trace.text, "good open");
    EXPECT_EQ(trace.names(), "lseek write write");
    EXPECT_EQ(readFile(path), "new\n");
}

TEST_F(AttributeStreamCalls, the_end_closes_what_is_open_and_nothing_else) {
    const Trace trace = traceSystemCalls([](TracedRun& run) {
        run.begin();
        {
            AttributeStream open;
            open.open(path);
            const AttributeStream closed;
        }
        run.end();
    });
    ASSERT_EQ(trace.names(), "openat close");
    EXPECT_EQ(static_cast<long>(trace.calls[1].arguments[0]), trace.calls[0].result);
}

}  // namespace
}  // namespace ZR::test
