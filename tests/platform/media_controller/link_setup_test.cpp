#include <fcntl.h>

#include <cerrno>

#include "tests/platform/media_controller/media_device_test.h"

namespace ZR::test {
namespace {

constexpr char link[] = "'tw9912 1-0044':0 -> 'ipu1_csi1_mux':4[1]";

class MediaLinkSetup : public MediaDeviceTest {
  protected:
    int setUp(const std::string& text) {
        text_ = text;
        char* end = nullptr;
        const int result = media_parse_setup_link(media_.get(), text_.c_str(), &end);
        left_ = end;
        return result;
    }

    std::string text_;
    std::string left_;  ///< of the text
};

TEST_F(MediaLinkSetup, opens_the_node_sets_the_link_and_closes_the_node) {
    enumerateSilently();
    EXPECT_EQ(setUp(link), 0);
    EXPECT_EQ(calls(),
              (Calls{"open /dev/media0", "SETUP_LINK /dev/media0 1:0 flags 2 -> 5:4 flags 1 1",
                     "close /dev/media0"}));
    EXPECT_EQ(mediaKernel().openFlags, (std::vector<int>{O_RDWR | O_CLOEXEC}));
    EXPECT_EQ(left_, "");
}

TEST_F(MediaLinkSetup, leaves_what_follows_the_bracket) {
    enumerateSilently();
    EXPECT_EQ(setUp(std::string(link) + " , 'next'"), 0);
    EXPECT_EQ(left_, ", 'next'");
}

TEST_F(MediaLinkSetup, takes_a_caller_who_does_not_ask_for_the_end) {
    enumerateSilently();
    EXPECT_EQ(media_parse_setup_link(media_.get(), link, nullptr), 0);
}

TEST_F(MediaLinkSetup, keeps_the_mark_of_a_link_that_cannot_change) {
    enumerateSilently();
    EXPECT_EQ(setUp("'ipu1_csi0_mux':5 -> 'ipu1_csi0':0[1]"), 0);
    EXPECT_EQ(calls().at(1), "SETUP_LINK /dev/media0 4:5 flags 2 -> 6:0 flags 1 3");
}

TEST_F(MediaLinkSetup, gives_the_kernels_refusal_with_the_text_read) {
    enumerateSilently();
    EXPECT_EQ(setUp("'ipu1_csi0_mux':5 -> 'ipu1_csi0':0[0]x"), -EINVAL);
    EXPECT_EQ(count("SETUP_LINK"), 1U);
    EXPECT_EQ(left_, "x");
}

TEST_F(MediaLinkSetup, gives_the_error_of_each_call) {
    enumerateSilently();
    mediaKernel().fail("SETUP_LINK", EBUSY);
    EXPECT_EQ(setUp(link), -EBUSY);
    EXPECT_FALSE(mediaKernel().hasOpenDescriptors());
    mediaKernel().fail("open", ENODEV);
    EXPECT_EQ(setUp(link), -ENODEV);
    EXPECT_EQ(count("SETUP_LINK"), 1U);
}

TEST_F(MediaLinkSetup, makes_an_interrupted_call_again) {
    enumerateSilently();
    mediaKernel().fail("SETUP_LINK", EINTR);
    EXPECT_EQ(setUp(link), 0);
    EXPECT_EQ(count("SETUP_LINK"), 2U);
}

TEST_F(MediaLinkSetup, refuses_what_is_no_link_without_a_call) {
    enumerateSilently();
    for (const std::string text :
         {"", "'tw9912 1-0044':0 -> 'ipu1_csi1_mux':3[1]", "'nope':0 -> 'ipu1_csi1_mux':4[1]",
          "'':0 -> 'ipu1_csi1_mux':4[1]", "'tw9912 1-0044':0 -> 'ipu1_csi1_mux':4",
          "'tw9912 1-0044':0 -> 'ipu1_csi1_mux':4[1"})
        EXPECT_EQ(setUp(text), -EINVAL) << text;
    EXPECT_EQ(calls(), Calls{});
}

TEST_F(MediaLinkSetup, knows_no_link_before_the_enumeration) {
    EXPECT_EQ(setUp(link), -EINVAL);
    EXPECT_EQ(calls(), Calls{});
}

TEST_F(MediaLinkSetup, takes_no_text) {
    enumerateSilently();
    char* end = nullptr;
    EXPECT_EQ(media_parse_setup_link(media_.get(), nullptr, &end), -EINVAL);
    EXPECT_EQ(end, nullptr);
}

}  // namespace
}  // namespace ZR::test
