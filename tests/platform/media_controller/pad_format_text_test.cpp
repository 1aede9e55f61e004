#include <gtest/gtest.h>
#include <linux/media-bus-format.h>

#include <string>

#include "platform/media_controller/pad_format_internal.h"

namespace ZR::media_controller {
namespace {

std::string text(const v4l2_rect& rectangle) {
    return '(' + std::to_string(rectangle.left) + ',' + std::to_string(rectangle.top) + ")/" +
           std::to_string(rectangle.width) + 'x' + std::to_string(rectangle.height);
}

/// All that a text wants, or "refused".
std::string wanted(const std::string& properties) {
    Text cursor(properties.c_str());
    PadFormat pad;
    if (!takePadFormat(cursor, pad))
        return "refused";
    const v4l2_mbus_framefmt& format = pad.format;
    std::string all;
    if (format.code != 0)
        all += std::to_string(format.code) + ' ' + std::to_string(format.width) + 'x' +
               std::to_string(format.height);
    for (const unsigned int value : {format.field, format.colorspace, unsigned{format.xfer_func},
                                     unsigned{format.ycbcr_enc}, unsigned{format.quantization}})
        all += ' ' + std::to_string(value);
    if (pad.interval.numerator != 0)
        all += " @" + std::to_string(pad.interval.numerator) + '/' +
               std::to_string(pad.interval.denominator);
    if (pad.crop.left != -1)
        all += " crop " + text(pad.crop);
    if (pad.compose.left != -1)
        all += " compose " + text(pad.compose);
    return all + " left \"" + cursor.position() + '"';
}

bool isRefused(const std::string& properties) {
    return wanted(properties) == "refused";
}

TEST(MediaPadFormatText_pure, takes_format_and_size) {
    EXPECT_EQ(wanted("[fmt:UYVY2X8/720x576],"), "8198 720x576 0 0 0 0 0 left \",\"");
    EXPECT_EQ(wanted("[fmt:AYUV32/720x480] x"), "8215 720x480 0 0 0 0 0 left \"x\"");
}

TEST(MediaPadFormatText_pure, takes_the_interval_right_behind_the_size_or_after_a_blank) {
    EXPECT_EQ(wanted("[fmt:UYVY2X8/720x576@1/50]"), "8198 720x576 0 0 0 0 0 @1/50 left \"\"");
    EXPECT_EQ(wanted("[fmt:UYVY2X8/720x576 @ 1 / 50 ]"), "8198 720x576 0 0 0 0 0 @1/50 left \"\"");
    EXPECT_EQ(wanted("[@1001/30000]"), " 0 0 0 0 0 @1001/30000 left \"\"");
}

TEST(MediaPadFormatText_pure, takes_every_field) {
    const char* const fields[] = {"any",           "none",         "top",    "bottom",
                                  "interlaced",    "seq-tb",       "seq-bt", "alternate",
                                  "interlaced-tb", "Interlaced-BT"};
    for (std::size_t i = 0; i < std::size(fields); ++i)
        EXPECT_EQ(wanted(std::string("[fmt:Y8/1x2 field:") + fields[i] + ']'),
                  "8193 1x2 " + std::to_string(i) + " 0 0 0 0 left \"\"");
}

TEST(MediaPadFormatText_pure, takes_the_colour_properties) {
    EXPECT_EQ(wanted("[fmt:Y8/1x2 colorspace:srgb xfer:709 ycbcr: bt2020c quantization:lim-range]"),
              "8193 1x2 0 8 1 7 2 left \"\"");
    EXPECT_EQ(wanted("[fmt:Y8/1x2colorspace:DCIP3 xfer:smpte2084]"),
              "8193 1x2 0 12 7 0 0 left \"\"");
}

TEST(MediaPadFormatText_pure, takes_rectangles) {
    EXPECT_EQ(wanted("[crop:(1,2)/3x4 compose: ( 5, 6)/ 7x 8]"),
              " 0 0 0 0 0 crop (1,2)/3x4 compose (5,6)/7x8 left \"\"");
    EXPECT_EQ(wanted("[(-2,-3)/4x5]"), " 0 0 0 0 0 crop (-2,-3)/4x5 left \"\"");
}

TEST(MediaPadFormatText_pure, takes_a_format_without_its_name_as_the_first_property_only) {
    EXPECT_EQ(wanted("[ UYVY2X8 720x576 (1,2)/3x4]"),
              "8198 720x576 0 0 0 0 0 crop (1,2)/3x4 left \"\"");
    EXPECT_TRUE(isRefused("[@1/25 UYVY2X8/720x576]"));
    EXPECT_TRUE(isRefused("[FMT:UYVY2X8/720x576]"));
}

TEST(MediaPadFormatText_pure, the_last_one_of_a_property_counts) {
    EXPECT_EQ(wanted("[fmt:Y8/1x2 field:top field:none]"), "8193 1x2 1 0 0 0 0 left \"\"");
    EXPECT_EQ(wanted("[@1/25@1/30]"), " 0 0 0 0 0 @1/30 left \"\"");
}

TEST(MediaPadFormatText_pure, a_format_undoes_field_and_colour_before_it) {
    EXPECT_EQ(wanted("[field:none colorspace:srgb fmt:Y8/1x2]"), "8193 1x2 0 0 0 0 0 left \"\"");
}

TEST(MediaPadFormatText_pure, brackets_may_be_empty) {
    EXPECT_EQ(wanted("[]"), " 0 0 0 0 0 left \"\"");
    EXPECT_EQ(wanted("[ ] "), " 0 0 0 0 0 left \"\"");
}

TEST(MediaPadFormatText_pure, refuses_what_it_cannot_read) {
    for (const char* const bad : {"",
                                  "fmt:Y8/1x2]",
                                  "[",
                                  "[fmt:Y8/1x2",
                                  "[fmt:Y8/1x2 ",
                                  "[fmt:Y8]",
                                  "[fmt:Y8",
                                  "[fmt:Y8/",
                                  "[fmt:Y8/1]",
                                  "[fmt:Y8/1 x2]",
                                  "[fmt:Y8/1X2]",
                                  "[fmt:y8/1x2]",
                                  "[fmt:8193/1x2]",
                                  "[fmt:/1x2]",
                                  "[fmt:Y8\t1x2]",
                                  "[fmt:Y8 /1x2]",
                                  "[fmt:Y8/1x2,field:none]",
                                  "[fmt:Y8/1x2 field:]",
                                  "[fmt:Y8/1x2 field:nonex]",
                                  "[fmt:Y8/1x2 field:none9]",
                                  "[fmt:Y8/1x2 field :none]",
                                  "[fmt:Y8/1x2 colorspace:unknown]",
                                  "[fmt:Y8/1x2 xfer:1]",
                                  "[fmt:Y8/1x2 ycbcr:x]",
                                  "[fmt:Y8/1x2 quantization:full]",
                                  "[fmt:Y8/1x2@]",
                                  "[fmt:Y8/1x2@1]",
                                  "[crop:]",
                                  "[crop:(]",
                                  "[crop:(1]",
                                  "[crop:(1,2]",
                                  "[crop:(1 ,2)/3x4]",
                                  "[crop:(1,2)3x4]",
                                  "[crop:(1,2)/3]",
                                  "[crop.bounds:(1,2)/3x4]",
                                  "[stream:1]",
                                  "[bogus]"})
        EXPECT_TRUE(isRefused(bad)) << bad;
}

TEST(MediaBusFormats_pure, have_the_kernels_codes) {
    EXPECT_EQ(busFormatCode("UYVY2X8"), unsigned{MEDIA_BUS_FMT_UYVY8_2X8});
    EXPECT_EQ(busFormatCode("UYVY8_2X8"), unsigned{MEDIA_BUS_FMT_UYVY8_2X8});
    EXPECT_EQ(busFormatCode("AYUV32"), unsigned{MEDIA_BUS_FMT_AYUV8_1X32});
    EXPECT_EQ(busFormatCode("AYUV8_1X32"), unsigned{MEDIA_BUS_FMT_AYUV8_1X32});
    EXPECT_EQ(busFormatCode("FIXED"), unsigned{MEDIA_BUS_FMT_FIXED});
    EXPECT_EQ(busFormatCode("S5C_UYVY_JPEG_1X8"), unsigned{MEDIA_BUS_FMT_S5C_UYVY_JPEG_1X8});
}

TEST(MediaBusFormats_pure, are_known_by_their_whole_name_only) {
    for (const char* const name : {"", "UYVY2X", "UYVY2X88", "uyvy2x8", "unknown"})
        EXPECT_EQ(busFormatCode(name), 0U) << name;
}

}  // namespace
}  // namespace ZR::media_controller
