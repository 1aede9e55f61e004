// The texts of the terminal, given to our media controller and to media-ctl.

#include "media_ctl_peer.h"
#include "tests/platform/media_controller/media_texts.h"

namespace ZR::test {
namespace {

class MediaCtlTexts : public MediaCtlPeer {
  protected:
    static std::string joined(const std::vector<std::string>& texts) {
        std::string list;
        for (const std::string& text : texts)
            list += (list.empty() ? "" : ",") + text;
        return list;
    }
};

TEST_F(MediaCtlTexts, links_one_by_one_are_set_up_as_by_media_ctl) {
    expectSame("-l", terminalLinkTexts(isQuad(), tw9912(), adv7180()));
}

TEST_F(MediaCtlTexts, links_in_one_list_are_set_up_as_by_media_ctl) {
    expectSame("-l", {joined(terminalLinkTexts(isQuad(), tw9912(), adv7180()))});
}

TEST_F(MediaCtlTexts, formats_of_each_path_and_standard_are_set_as_by_media_ctl) {
    for (const std::string& text : terminalFormatTexts(isQuad(), tw9912(), adv7180()))
        expectSame("-V", {text});
}

TEST_F(MediaCtlTexts, formats_over_enabled_links_are_set_as_by_media_ctl) {
    const std::string links = joined(terminalLinkTexts(isQuad(), tw9912(), adv7180()));
    for (const std::string& text : terminalFormatTexts(isQuad(), tw9912(), adv7180()))
        expectSameAfter(links, "-V", {text});
}

}  // namespace
}  // namespace ZR::test
