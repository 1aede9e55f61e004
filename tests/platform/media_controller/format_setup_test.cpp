#include <fcntl.h>

#include <cerrno>

#include "mediactl/v4l2subdev.h"
#include "tests/platform/media_controller/media_device_test.h"

namespace ZR::test {
namespace {

// Entities of the graph: 1 tw9912, 3 imx6-mipi-csi2, 5 ipu1_csi1_mux, 8 ipu1_csi1.
constexpr char decoder[] = "'tw9912 1-0044':0 [fmt:UYVY2X8/720x576]";
constexpr char toMux[] = "'tw9912 1-0044':0 -> 'ipu1_csi1_mux':4[1]";
constexpr char pal[] = " which 1 720x576 code 8198 field 0 colour 0 0 0 0 flags 0";

std::string formatOf(const std::string& node, int pad, const std::string& format = pal) {
    return "S_FMT /dev/v4l-subdev" + node + " pad " + std::to_string(pad) + format;
}

class MediaFormatSetup : public MediaDeviceTest {
  protected:
    int setUp(const std::string& text) {
        return v4l2_subdev_parse_setup_formats(media_.get(), text.c_str());
    }

    void enable(const char* text) {
        ASSERT_EQ(media_parse_setup_link(media_.get(), text, nullptr), 0);
        calls().clear();
        mediaKernel().openFlags.clear();
    }
};

TEST_F(MediaFormatSetup, opens_the_sub_device_once_and_keeps_it_open) {
    enumerateSilently();
    EXPECT_EQ(setUp(decoder), 0);
    EXPECT_EQ(setUp(decoder), 0);
    EXPECT_EQ(calls(), (Calls{"open /dev/v4l-subdev1", formatOf("1", 0), formatOf("1", 0)}));
    EXPECT_EQ(mediaKernel().openFlags, (std::vector<int>{O_RDWR | O_CLOEXEC}));
    media_.reset();
    EXPECT_EQ(calls().back(), "close /dev/v4l-subdev1");
}

TEST_F(MediaFormatSetup, sets_each_pad_in_the_order_of_the_text) {
    enumerateSilently();
    EXPECT_EQ(setUp("'ipu1_csi1':0 [fmt:UYVY2X8/720x576@1/50 field:none] , "
                    "'imx6-mipi-csi2':0 [fmt:UYVY2X8/720x576]"),
              0);
    EXPECT_EQ(calls(),
              (Calls{"open /dev/v4l-subdev8",
                     formatOf("8", 0, " which 1 720x576 code 8198 field 1 colour 0 0 0 0 flags 0"),
                     "S_FRAME_INTERVAL /dev/v4l-subdev8 pad 0 1/50", "open /dev/v4l-subdev3",
                     formatOf("3", 0)}));
}

TEST_F(MediaFormatSetup, carries_the_format_of_a_source_pad_over_its_enabled_links) {
    enumerateSilently();
    enable(toMux);
    EXPECT_EQ(setUp(decoder), 0);
    EXPECT_EQ(calls(), (Calls{"open /dev/v4l-subdev1", formatOf("1", 0), "open /dev/v4l-subdev5",
                              formatOf("5", 4)}));
}

TEST_F(MediaFormatSetup, carries_nothing_over_a_link_that_is_off_again) {
    enumerateSilently();
    enable(toMux);
    enable("'tw9912 1-0044':0 -> 'ipu1_csi1_mux':4[0]");
    EXPECT_EQ(setUp(decoder), 0);
    EXPECT_EQ(calls(), (Calls{"open /dev/v4l-subdev1", formatOf("1", 0)}));
}

TEST_F(MediaFormatSetup, carries_nothing_over_a_link_that_the_kernel_did_not_enable) {
    enumerateSilently();
    mediaKernel().fail("SETUP_LINK", EBUSY);
    EXPECT_EQ(media_parse_setup_link(media_.get(), toMux, nullptr), -EBUSY);
    calls().clear();
    EXPECT_EQ(setUp(decoder), 0);
    EXPECT_EQ(count("S_FMT"), 1U);
}

TEST_F(MediaFormatSetup, carries_nothing_to_a_capture_node) {
    enumerateSilently();
    enable("'ipu1_csi1':2 -> 'ipu1_csi1 capture':0[1]");
    EXPECT_EQ(setUp("'ipu1_csi1':2 [fmt:AYUV32/720x576@1/50]"), 0);
    EXPECT_EQ(count("S_FMT"), 1U);
    EXPECT_EQ(count("S_FRAME_INTERVAL"), 1U);
}

TEST_F(MediaFormatSetup, carries_nothing_from_a_sink_pad) {
    enumerateSilently();
    enable(toMux);
    EXPECT_EQ(setUp("'ipu1_csi1_mux':4 [fmt:UYVY2X8/720x576]"), 0);
    EXPECT_EQ(count("S_FMT"), 1U);
}

TEST_F(MediaFormatSetup, carries_on_what_the_driver_made_of_the_format) {
    entity("tw9912 1-0044").widest = 640;
    enumerateSilently();
    enable(toMux);
    EXPECT_EQ(setUp(decoder), 0);
    EXPECT_EQ(calls().back(),
              formatOf("5", 4, " which 1 640x576 code 8198 field 0 colour 0 0 0 0 flags 0"));
}

TEST_F(MediaFormatSetup, carries_the_interval_on_also_without_a_format) {
    entity("tw9912 1-0044").hasIntervals = true;
    entity("ipu1_csi1_mux").hasIntervals = true;
    enumerateSilently();
    enable(toMux);
    EXPECT_EQ(setUp("'tw9912 1-0044':0 [@1/25]"), 0);
    EXPECT_EQ(calls(),
              (Calls{"open /dev/v4l-subdev1", "S_FRAME_INTERVAL /dev/v4l-subdev1 pad 0 1/25",
                     "open /dev/v4l-subdev5", "S_FRAME_INTERVAL /dev/v4l-subdev5 pad 4 1/25"}));
}

TEST_F(MediaFormatSetup, takes_no_notice_of_a_format_that_could_not_be_carried_on) {
    enumerateSilently();
    enable(toMux);
    mediaKernel().fail("S_FMT", EIO, 2);
    EXPECT_EQ(setUp(std::string(decoder) + ",'imx6-mipi-csi2':0 [fmt:UYVY2X8/720x576]"), 0);
    EXPECT_EQ(count("S_FMT"), 3U);
}

TEST_F(MediaFormatSetup, takes_no_notice_of_a_sub_device_that_has_no_intervals) {
    entity("tw9912 1-0044").hasIntervals = true;
    for (const int error : {ENOTTY, EINVAL}) {
        mediaKernel().fail("S_FRAME_INTERVAL", error, 2);
        media_.reset(media_device_new("/dev/media0"));
        enumerateSilently();
        enable(toMux);
        EXPECT_EQ(setUp("'tw9912 1-0044':0 [@1/25]"), 0);
        EXPECT_EQ(count("S_FRAME_INTERVAL"), 2U);
    }
}

TEST_F(MediaFormatSetup, gives_every_other_error_of_an_interval_that_is_carried_on) {
    entity("tw9912 1-0044").hasIntervals = true;
    enumerateSilently();
    enable(toMux);
    mediaKernel().fail("S_FRAME_INTERVAL", EIO, 2);
    EXPECT_EQ(setUp("'tw9912 1-0044':0 [@1/25],'ipu1_csi1':0 [fmt:UYVY2X8/720x576]"), -EIO);
    EXPECT_EQ(count("S_FMT"), 0U);
}

TEST_F(MediaFormatSetup, stops_at_the_first_pad_that_fails) {
    enumerateSilently();
    for (const std::string call : {"S_FMT", "S_FRAME_INTERVAL", "S_SELECTION", "open"}) {
        calls().clear();
        media_.reset(media_device_new("/dev/media0"));
        enumerateSilently();
        mediaKernel().fail(call, EBUSY);
        EXPECT_EQ(setUp("'ipu1_csi1':0 [fmt:UYVY2X8/720x576@1/50 crop:(1,2)/3x4],"
                        "'imx6-mipi-csi2':0 [fmt:UYVY2X8/720x576]"),
                  -EBUSY);
        EXPECT_EQ(count("open /dev/v4l-subdev3"), 0U) << call;
    }
}

TEST_F(MediaFormatSetup, of_a_sink_pad_comes_before_its_rectangles) {
    enumerateSilently();
    EXPECT_EQ(setUp("'ipu1_csi1':0 [crop:(1,2)/3x4 compose:(5,6)/7x8 fmt:UYVY2X8/720x576]"), 0);
    EXPECT_EQ(calls(),
              (Calls{"open /dev/v4l-subdev8", formatOf("8", 0),
                     "S_SELECTION /dev/v4l-subdev8 pad 0 which 1 target 0 flags 0 1,2 3x4",
                     "S_SELECTION /dev/v4l-subdev8 pad 0 which 1 target 256 flags 0 5,6 7x8"}));
}

TEST_F(MediaFormatSetup, of_a_source_pad_comes_after_its_rectangles) {
    enumerateSilently();
    EXPECT_EQ(setUp("'ipu1_csi1':1 [fmt:UYVY2X8/720x576 compose:(5,6)/7x8 crop:(1,2)/3x4]"), 0);
    EXPECT_EQ(calls(),
              (Calls{"open /dev/v4l-subdev8",
                     "S_SELECTION /dev/v4l-subdev8 pad 1 which 1 target 0 flags 0 1,2 3x4",
                     "S_SELECTION /dev/v4l-subdev8 pad 1 which 1 target 256 flags 0 5,6 7x8",
                     formatOf("8", 1)}));
}

TEST_F(MediaFormatSetup, crops_the_old_way_where_a_driver_knows_no_selections) {
    entity("ipu1_csi1").hasSelections = false;
    enumerateSilently();
    EXPECT_EQ(setUp("'ipu1_csi1':0 [crop:(1,2)/3x4]"), 0);
    EXPECT_EQ(calls().back(), "S_CROP /dev/v4l-subdev8 pad 0 which 1 1,2 3x4");
    EXPECT_EQ(setUp("'ipu1_csi1':0 [compose:(1,2)/3x4]"), -ENOTTY);
    EXPECT_EQ(count("S_CROP"), 1U);
}

TEST_F(MediaFormatSetup, leaves_alone_what_the_text_leaves_out) {
    enumerateSilently();
    for (const std::string properties :
         {"[]", "[field:none]", "[fmt:UYVY2X8/0x576]", "[fmt:UYVY2X8/720x0]", "[@0/25]",
          "[crop:(-1,2)/3x4]", "[compose:(1,-1)/3x4]"})
        EXPECT_EQ(setUp("'ipu1_csi1':0 " + properties), 0) << properties;
    EXPECT_EQ(calls(), Calls{});
}

TEST_F(MediaFormatSetup, sets_all_pads_and_then_refuses_a_comma_at_the_end) {
    enumerateSilently();
    EXPECT_EQ(setUp(std::string(decoder) + ','), -EINVAL);
    EXPECT_EQ(count("S_FMT"), 1U);
}

TEST_F(MediaFormatSetup, sets_all_pads_and_then_refuses_what_follows) {
    enumerateSilently();
    EXPECT_EQ(setUp(std::string(decoder) + " x"), -EINVAL);
    EXPECT_EQ(count("S_FMT"), 1U);
}

TEST_F(MediaFormatSetup, sets_no_part_of_a_pad_whose_text_it_cannot_read) {
    enumerateSilently();
    EXPECT_EQ(setUp("'ipu1_csi1':0 [fmt:UYVY2X8/720x576 field:bogus]"), -EINVAL);
    EXPECT_EQ(setUp("'ipu1_csi1':0 [fmt:UYVY2X8/720x576"), -EINVAL);
    EXPECT_EQ(setUp("'':0 [fmt:UYVY2X8/720x576]"), -EINVAL);
    EXPECT_EQ(setUp(""), -EINVAL);
    EXPECT_EQ(calls(), Calls{});
}

TEST_F(MediaFormatSetup, of_an_entity_without_a_node_fails_as_its_opening_does) {
    mediaKernel().fail("readlink", ENOENT);
    enumerateSilently();
    EXPECT_EQ(setUp(decoder), -ENOENT);
}

TEST_F(MediaFormatSetup, opens_again_what_could_not_be_opened) {
    enumerateSilently();
    mediaKernel().fail("open", EBUSY);
    EXPECT_EQ(setUp(decoder), -EBUSY);
    EXPECT_EQ(setUp(decoder), 0);
    EXPECT_EQ(count("open"), 2U);
}

TEST_F(MediaFormatSetup, makes_an_interrupted_call_again) {
    enumerateSilently();
    mediaKernel().fail("open", EINTR);
    mediaKernel().fail("S_FMT", EINTR);
    EXPECT_EQ(setUp(decoder), 0);
    EXPECT_EQ(count("S_FMT"), 2U);
}

TEST_F(MediaFormatSetup, takes_no_text) {
    enumerateSilently();
    EXPECT_EQ(v4l2_subdev_parse_setup_formats(media_.get(), nullptr), -EINVAL);
}

}  // namespace
}  // namespace ZR::test
