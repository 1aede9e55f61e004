// Mistyped texts, given to our media controller and to media-ctl.

#include <algorithm>

#include "media_ctl_peer.h"
#include "tests/platform/media_controller/media_texts.h"

namespace ZR::test {
namespace {

constexpr char mux[] = "ipu1_csi1_mux";

/// Each case has a minute, and media-ctl is started for each text.
constexpr std::size_t textsOfACase = 30;

using MediaCtlCutOff = MediaCtlPeer;

class MediaCtlMistyped : public MediaCtlPeer {
  protected:
    /// Gives one part of all texts, 0 being the first, and the rest where @p isLast.
    static void expectSamePart(std::size_t part, bool isLast, const std::string& option,
                               const std::vector<std::string>& texts) {
        const std::size_t begin = part * textsOfACase;
        const std::size_t end = std::min(texts.size(), begin + textsOfACase);
        ASSERT_LT(begin, end);
        ASSERT_EQ(isLast, end == texts.size());
        const auto first = texts.begin();
        expectSame(option, {first + static_cast<std::ptrdiff_t>(begin),
                            first + static_cast<std::ptrdiff_t>(end)});
    }

    static void expectSameLinks(std::size_t part, bool isLast = false) {
        expectSamePart(part, isLast, "-l", mistypedLinkTexts(tw9912(), mux));
    }

    static void expectSameFormats(std::size_t part, bool isLast = false) {
        expectSamePart(part, isLast, "-V", mistypedFormatTexts(tw9912()));
    }
};

TEST_F(MediaCtlMistyped, first_links_are_taken_or_refused_as_by_media_ctl) {
    expectSameLinks(0);
}

TEST_F(MediaCtlMistyped, second_links_are_taken_or_refused_as_by_media_ctl) {
    expectSameLinks(1);
}

TEST_F(MediaCtlMistyped, last_links_are_taken_or_refused_as_by_media_ctl) {
    expectSameLinks(2, true);
}

TEST_F(MediaCtlMistyped, first_formats_are_taken_or_refused_as_by_media_ctl) {
    expectSameFormats(0);
}

TEST_F(MediaCtlMistyped, second_formats_are_taken_or_refused_as_by_media_ctl) {
    expectSameFormats(1);
}

TEST_F(MediaCtlMistyped, third_formats_are_taken_or_refused_as_by_media_ctl) {
    expectSameFormats(2);
}

TEST_F(MediaCtlMistyped, last_formats_are_taken_or_refused_as_by_media_ctl) {
    expectSameFormats(3, true);
}

TEST_F(MediaCtlCutOff, links_cut_off_anywhere_are_refused_as_by_media_ctl) {
    expectSame("-l", cutOff('\'' + tw9912() + "':0 -> '" + mux + "':4[1]"));
}

TEST_F(MediaCtlCutOff, formats_cut_off_anywhere_are_refused_as_by_media_ctl) {
    expectSame("-V", cutOff('\'' + tw9912() + "':0 [fmt:UYVY2X8/720x576@1/50 field:none]"));
}

}  // namespace
}  // namespace ZR::test
