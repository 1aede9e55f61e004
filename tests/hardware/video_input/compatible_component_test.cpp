#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "hardware/video_input/gstreamer_video_input/functional/capture_discovery_internal.h"

namespace ZR::test {
namespace {

using namespace std::string_view_literals;

TEST(CompatibleComponent_pure, is_what_follows_the_comma_of_one_name) {
    EXPECT_EQ(lastCompatibleComponent("fsl,imx6dl"), "imx6dl");
    EXPECT_EQ(lastCompatibleComponent("fsl,imx6q"), "imx6q");
}

TEST(CompatibleComponent_pure, is_without_the_trailing_nul) {
    EXPECT_EQ(lastCompatibleComponent("fsl,imx6dl\0"sv), "imx6dl");
    EXPECT_EQ(lastCompatibleComponent("fsl,imx6dl\0\0\0"sv), "imx6dl");
}

TEST(CompatibleComponent_pure, is_that_of_the_last_of_several_names) {
    EXPECT_EQ(lastCompatibleComponent("maker,board\0fsl,imx6dl\0"sv), "imx6dl");
    EXPECT_EQ(lastCompatibleComponent("fsl,imx6dl\0maker,board\0"sv), "board");
    EXPECT_EQ(lastCompatibleComponent("a,b,c"), "c");
}

TEST(CompatibleComponent_pure, joins_names_without_a_comma_across_the_nul) {
    EXPECT_EQ(lastCompatibleComponent("maker,board\0imx6dl\0"sv), "boardimx6dl");
}

TEST(CompatibleComponent_pure, is_empty_after_a_trailing_comma) {
    EXPECT_EQ(lastCompatibleComponent("fsl,imx6dl,"), "");
    EXPECT_EQ(lastCompatibleComponent(","), "");
    EXPECT_EQ(lastCompatibleComponent("fsl,imx6dl,\0"sv), "");
}

TEST(CompatibleComponent_pure, is_the_whole_text_without_a_comma) {
    EXPECT_EQ(lastCompatibleComponent("imx6dl"), "imx6dl");
    EXPECT_EQ(lastCompatibleComponent("imx6dl\0"sv), "imx6dl");
    EXPECT_EQ(lastCompatibleComponent("x"), "x");
}

TEST(CompatibleComponent_pure, of_an_empty_text_is_empty) {
    EXPECT_EQ(lastCompatibleComponent(""), "");
    EXPECT_EQ(lastCompatibleComponent("\0"sv), "");
}

TEST(CompatibleComponent_pure, is_without_blanks_wherever_they_stand) {
    EXPECT_EQ(lastCompatibleComponent("fsl, imx6dl"), "imx6dl");
    EXPECT_EQ(lastCompatibleComponent("fsl,imx6dl "), "imx6dl");
    EXPECT_EQ(lastCompatibleComponent("fsl,imx 6 dl"), "imx6dl");
    EXPECT_EQ(lastCompatibleComponent("fsl,   "), "");
}

TEST(CompatibleComponent_pure, is_without_control_characters) {
    EXPECT_EQ(lastCompatibleComponent("fsl,imx6dl\n"), "imx6dl");
    EXPECT_EQ(lastCompatibleComponent("fsl,\timx6\r\ndl\x1f\x01"), "imx6dl");
}

TEST(CompatibleComponent_pure, keeps_all_that_comes_after_the_blank_in_the_table) {
    std::string text = "fsl,";
    std::string expected;
    for (int code = 0; code <= 0xFF; ++code) {
        if (code == ',')
            continue;
        text += static_cast<char>(code);
        if (code > 0x20)
            expected += static_cast<char>(code);
    }
    EXPECT_EQ(lastCompatibleComponent(text), expected);
    EXPECT_EQ(expected.size(), 222U);
}

TEST(CompatibleComponent_pure, keeps_characters_above_0x7f) {
    EXPECT_EQ(lastCompatibleComponent("fsl,imx6dl\x80"), "imx6dl\x80");
    EXPECT_EQ(lastCompatibleComponent("fsl,\xC3\xBC\xFF"), "\xC3\xBC\xFF");
}

TEST(CompatibleComponent_pure, keeps_the_case) {
    EXPECT_EQ(lastCompatibleComponent("FSL,iMX6DL"), "iMX6DL");
}

TEST(CompatibleComponent_pure, of_the_dual_lite_is_imx6dl) {
    EXPECT_EQ(dualLiteComponent, "imx6dl");
}

}  // namespace
}  // namespace ZR::test
