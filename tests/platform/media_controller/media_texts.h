#pragma once

#include <string>
#include <vector>

namespace ZR::test {

/// The texts that the library gives to the media controller on a terminal.
std::vector<std::string> terminalLinkTexts(bool isQuad, const std::string& tw9912,
                                           const std::string& adv7180);
/// For both television standards.
std::vector<std::string> terminalFormatTexts(bool isQuad, const std::string& tw9912,
                                             const std::string& adv7180);

/// A text cut off at each place.
std::vector<std::string> cutOff(const std::string& text);
/// A text with each of its characters left out, doubled, and replaced by others.
std::vector<std::string> withOtherCharacters(const std::string& text);

/// Texts for oddGraph() that walk along the borders of the grammar.
std::vector<std::string> oddLinkTexts();
std::vector<std::string> oddFormatTexts();

/// What somebody may mistype of "'source':0 -> 'sink':4[1]".
std::vector<std::string> mistypedLinkTexts(const std::string& source, const std::string& sink);
/// What somebody may mistype of "'entity':0 [fmt:UYVY2X8/720x576@1/50 field:none]".
std::vector<std::string> mistypedFormatTexts(const std::string& entity);

}  // namespace ZR::test
