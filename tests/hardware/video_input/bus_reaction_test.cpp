#include <gtest/gtest.h>

#include <string>

#include "hardware/video_input/gstreamer_video_input/functional/bus_reaction_internal.h"

namespace ZR {
namespace {

struct ReactionCase {
    const char* name;
    BusNews news;
    bool before;      ///< data was flowing
    bool after;       ///< counts as flowing from then on
    bool clearsTick;  ///< no RTSP data is owed any more
    RestartWish restart;
    const char* line;
};

void PrintTo(const ReactionCase& each, std::ostream* stream) {
    *stream << each.name;
}

class BusReaction_pure : public testing::TestWithParam<ReactionCase> {};

TEST_P(BusReaction_pure, is_what_the_message_and_the_flow_of_data_ask_for) {
    const ReactionCase& each = GetParam();
    const BusReaction reaction = reactionTo(each.news, each.before);
    EXPECT_EQ(reaction.streaming, each.after);
    EXPECT_EQ(reaction.clearsRtspStart, each.clearsTick);
    EXPECT_EQ(reaction.restart, each.restart);
    EXPECT_EQ(reaction.line, each.line);
}

constexpr RestartWish none = RestartWish::None;
constexpr RestartWish shown = RestartWish::IfOnScreen;
constexpr RestartWish unlessStopped = RestartWish::IfOnScreenUnlessStopped;
constexpr char described[] = "application/x-rtp-source-sdes => should be running";

// name, message, data flowed, flows, clears the tick, restart, line
constexpr ReactionCase cases[] = {
    {"end_of_flowing", BusNews::EndOfStream, true, false, false, shown, "STREAM TIMEOUT (EOS)!"},
    {"end_of_none", BusNews::EndOfStream, false, false, false, none, ""},
    {"error_of_flowing", BusNews::Error, true, true, false, shown, ""},
    {"error_of_none", BusNews::Error, false, false, false, shown, ""},
    {"warning_of_flowing", BusNews::Warning, true, true, false, none, ""},
    {"warning_of_none", BusNews::Warning, false, false, false, none, ""},
    {"time_out_of_flowing", BusNews::UdpTimeout, true, false, false, unlessStopped,
     "STREAM TIMED OUT!"},
    {"time_out_of_none", BusNews::UdpTimeout, false, false, false, none, ""},
    {"description_of_flowing", BusNews::SourceDescription, true, true, true, none, ""},
    {"description_of_none", BusNews::SourceDescription, false, true, true, none, described},
    {"completion_of_flowing", BusNews::AsyncDone, true, true, false, none, ""},
    {"completion_of_none", BusNews::AsyncDone, false, true, true, none, ""},
    {"quality_of_flowing", BusNews::Quality, true, true, false, none, ""},
    {"quality_of_none", BusNews::Quality, false, true, false, none, ""},
    {"start_of_flowing", BusNews::StreamStart, true, true, false, none, ""},
    {"start_of_none", BusNews::StreamStart, false, true, true, none, ""},
    {"ignored_of_flowing", BusNews::Ignored, true, true, false, none, ""},
    {"ignored_of_none", BusNews::Ignored, false, false, false, none, ""},
    {"unexpected_of_flowing", BusNews::Unexpected, true, true, false, none, ""},
    {"unexpected_of_none", BusNews::Unexpected, false, false, false, none, ""},
};

INSTANTIATE_TEST_SUITE_P(Each, BusReaction_pure, testing::ValuesIn(cases),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace ZR
