#include <string>

#include "tests/hardware/video_input/capture_board.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

using Input = ZRGstreamerVideoInput;

class Instance : public CaptureTest {};

TEST_F(Instance, of_one_name_is_the_same_object) {
    Input* const first = Input::getInstance("camera");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(Input::getInstance("camera"), first);
    EXPECT_EQ(Input::getInstance(std::string("cam") + "era"), first);
    EXPECT_EQ(Input::instances.size(), 1U);
}

TEST_F(Instance, of_another_name_is_another_object) {
    Input* const first = Input::getInstance("camera");
    EXPECT_NE(Input::getInstance("Camera"), first);
    EXPECT_NE(Input::getInstance(""), first);
    EXPECT_NE(Input::getInstance(std::string("camera\0", 7)), first);
    EXPECT_EQ(Input::instances.size(), 4U);
}

TEST_F(Instance, is_kept_under_its_name_and_knows_it) {
    Input* const made = Input::getInstance("rear camera");
    ASSERT_EQ(Input::instances.count("rear camera"), 1U);
    EXPECT_EQ(Input::instances.at("rear camera").get(), made);
    EXPECT_EQ(made->*(&OpenInput::name), "rear camera");
}

TEST_F(Instance, starts_without_settings) {
    EXPECT_TRUE((Input::getInstance("camera")->*(&OpenInput::videoSettings)).empty());
}

TEST_F(Instance, is_made_after_the_discovery) {
    Input* const made = Input::getInstance("camera");
    EXPECT_NE(made, nullptr);
    EXPECT_FALSE(Input::initialSetupPending);
    EXPECT_EQ(callsOf("open").size(), 4U);
    EXPECT_EQ(Input::fileDescriptors[0], 10);
}

TEST_F(Instance, that_is_there_needs_no_discovery) {
    (void)Input::getInstance("camera");
    Input::initialSetupPending = true;
    (void)takeCalls();
    (void)Input::getInstance("camera");
    EXPECT_EQ(calls(), Calls{});
    EXPECT_TRUE(Input::initialSetupPending);
}

TEST_F(Instance, that_is_to_be_made_asks_for_the_discovery_each_time) {
    (void)Input::getInstance("camera");
    Input::initialSetupPending = true;
    (void)takeCalls();
    (void)Input::getInstance("second");
    EXPECT_EQ(callsOf("open").size(), 4U);
    (void)takeCalls();
    (void)Input::getInstance("third");
    EXPECT_EQ(calls(), Calls{});
}

TEST_F(Instance, is_made_also_where_the_discovery_finds_nothing) {
    Media::canBeMade = false;
    FileReadSubstitute::files.clear();
    EXPECT_NE(Input::getInstance("camera"), nullptr);
}

TEST_F(Instance, that_the_application_has_taken_out_stays_out) {
    Input::instances["camera"] = nullptr;
    EXPECT_EQ(Input::getInstance("camera"), nullptr);
    EXPECT_EQ(calls(), Calls{});
}

TEST_F(Instance, of_a_type_other_than_0_is_null_and_nothing_is_created) {
    for (const int type : {1, 2, -1, 2147483647})
        EXPECT_EQ(ZRVideoInputInterface::getInstance(static_cast<ZRVideoInputType>(type), "camera"),
                  nullptr);
    EXPECT_TRUE(Input::instances.empty());
    EXPECT_TRUE(Input::initialSetupPending);
    EXPECT_FALSE(Input::busThreadLaunched);
    EXPECT_EQ(calls(), Calls{});
}

TEST_F(Instance, of_a_type_other_than_0_is_null_also_where_the_name_is_known) {
    (void)Input::getInstance("camera");
    EXPECT_EQ(ZRVideoInputInterface::getInstance(static_cast<ZRVideoInputType>(1), "camera"),
              nullptr);
}

TEST_F(Instance, of_type_0_is_the_object_of_the_name_seen_as_its_interface) {
    ZRVideoInputInterface* const interface =
        ZRVideoInputInterface::getInstance(VideoInputGstreamer, "camera");
    Input* const made = Input::getInstance("camera");
    ASSERT_NE(interface, nullptr);
    EXPECT_EQ(interface, static_cast<ZRVideoInputInterface*>(made));
    EXPECT_NE(static_cast<void*>(interface), static_cast<void*>(made));
}

TEST_F(Instance, of_type_0_that_the_application_has_taken_out_is_null) {
    Input::instances["camera"] = nullptr;
    EXPECT_EQ(ZRVideoInputInterface::getInstance(VideoInputGstreamer, "camera"), nullptr);
}

TEST_F(Instance, is_made_without_a_word) {
    const OutputCapture capture;
    (void)Input::getInstance("camera");
    EXPECT_EQ(capture.output() + capture.errors(), "");
}

}  // namespace
}  // namespace ZR::test
