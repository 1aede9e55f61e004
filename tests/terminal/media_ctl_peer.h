#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ZR::test {

/// Gives texts to our media controller and to media-ctl, on the same new graph each.
class MediaCtlPeer : public testing::Test {
  protected:
    /// Both make the same requests with each text, byte by byte, have the same success and leave the
    /// same graph; @p option is that of media-ctl, -l or -V.
    static void expectSame(const std::string& option, const std::vector<std::string>& texts);
    /// The same after media-ctl has enabled links on both graphs.
    static void expectSameAfter(const std::string& links, const std::string& option,
                                const std::vector<std::string>& texts);

    static bool isQuad();
    /// The names of the decoders' entities.
    static std::string tw9912() { return entityBeginningWith("tw9912"); }
    static std::string adv7180() { return entityBeginningWith("adv7180"); }

  private:
    static std::string entityBeginningWith(const std::string& begin);
};

}  // namespace ZR::test
