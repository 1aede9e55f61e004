#include "tests/platform/media_controller/media_texts.h"

namespace ZR::test {

std::vector<std::string> mistypedLinkTexts(const std::string& source, const std::string& sink) {
    const std::string from = '\'' + source + "':0";
    const std::string to = '\'' + sink + "':4";
    const std::string good = from + " -> " + to + "[1]";
    std::vector<std::string> texts;
    // Quotes and names.
    for (const std::string& name :
         {source, '\'' + source, source + '\'', '"' + source + '\'', "''" + source + "''",
          "' " + source + '\'', '\'' + source + " '", '\'' + source.substr(1) + '\'',
          '\'' + source + "x'", std::string("''"), std::string("'nope'"), std::string("0"),
          std::string("99999"), std::string("-1"), std::string("1x"), std::string("4294967297")})
        texts.push_back(name + ":0 -> " + to + "[1]");
    // Pads.
    for (const std::string pad : {"", ":", ":x", ":1", ":-1", "::0", ":0:0", ";0", " 0", ":65536",
                                  ":4294967296", ":0x0", ": 0 "})
        texts.push_back('\'' + source + '\'' + pad + " -> " + to + "[1]");
    for (const std::string pad : {":6", ":3", ":4,", ":04"})
        texts.push_back(from + " -> '" + sink + '\'' + pad + "[1]");
    // The arrow.
    for (const std::string arrow :
         {"", "->", " - > ", " > ", " - ", " => ", " <- ", " -> -> ", " --> ", "\t->\t"})
        texts.push_back(from + arrow + to + "[1]");
    // Flags, and what may follow.
    for (const std::string flags : {"",
                                    "[",
                                    "]",
                                    "[]",
                                    "[1",
                                    "1]",
                                    "(1)",
                                    "[0x1]",
                                    "[one]",
                                    "[2]",
                                    "[3]",
                                    "[-1]",
                                    "[1,0]",
                                    "[1 1]",
                                    "[[1]]",
                                    "[1]]",
                                    "[1][1]",
                                    "[4294967297]",
                                    " [ 1 ] ",
                                    "[1] x",
                                    "[1],",
                                    "[1],,",
                                    "[1], ,",
                                    "[1];[1]",
                                    "[999999999999999999999999]",
                                    "[1]\n"})
        texts.push_back(from + " -> " + to + flags);
    // Whole links.
    texts.push_back(to + " -> " + from + "[1]");
    texts.push_back(from + " -> " + from + "[1]");
    texts.push_back(good + good);
    texts.push_back(good + "," + good);
    texts.push_back("," + good);
    texts.push_back(good + ",'nope':0 -> " + to + "[1]," + good);
    for (const std::string text : {"", " ", ",", "->", "[1]"})
        texts.push_back(text);
    return texts;
}

std::vector<std::string> mistypedFormatTexts(const std::string& entity) {
    const std::string pad = '\'' + entity + "':0 ";
    const std::string good = pad + "[fmt:UYVY2X8/720x576]";
    std::vector<std::string> texts;
    for (const std::string properties :
         {// Brackets.
          "", "fmt:UYVY2X8/720x576", "[fmt:UYVY2X8/720x576", "fmt:UYVY2X8/720x576]", "[]", "[ ]",
          "(fmt:UYVY2X8/720x576)", "[[fmt:UYVY2X8/720x576]]", "[fmt:UYVY2X8/720x576]]",
          // Names of formats.
          "[fmt:/720x576]", "[fmt:UYVY/720x576]", "[fmt:uyvy2x8/720x576]", "[fmt:UYVY2X8_/720x576]",
          "[fmt:UYVY8_2X8/720x576]", "[fmt:NOPE/720x576]", "[fmt:8198/720x576]",
          "[fmt UYVY2X8/720x576]", "[fmt: UYVY2X8/720x576]", "[UYVY2X8/720x576]",
          "[UYVY2X8 720x576]", "[nope]", "[fmt:AYUV32/720x576]",
          // Sizes.
          "[fmt:UYVY2X8]", "[fmt:UYVY2X8/]", "[fmt:UYVY2X8/720]", "[fmt:UYVY2X8/720x]",
          "[fmt:UYVY2X8/x576]", "[fmt:UYVY2X8/720*576]", "[fmt:UYVY2X8/720X576]",
          "[fmt:UYVY2X8/720 x 576]", "[fmt:UYVY2X8/720x576x2]", "[fmt:UYVY2X8/0x0]",
          "[fmt:UYVY2X8/-720x-576]", "[fmt:UYVY2X8/4294967295x4294967295]",
          "[fmt:UYVY2X8/99999999999999999999x576]", "[fmt:UYVY2X8//720x576]",
          // Intervals.
          "[fmt:UYVY2X8/720x576@]", "[fmt:UYVY2X8/720x576@1]", "[fmt:UYVY2X8/720x576@1/]",
          "[fmt:UYVY2X8/720x576@/50]", "[fmt:UYVY2X8/720x576@0/50]", "[fmt:UYVY2X8/720x576@1/0]",
          "[fmt:UYVY2X8/720x576 @ 1 / 50]", "[fmt:UYVY2X8/720x576@1:50]",
          "[fmt:UYVY2X8/720x576@-1/50]", "[@1/50]", "[fmt:UYVY2X8/720x576@1/50@1/25]",
          // Fields and colours.
          "[fmt:UYVY2X8/720x576 field]", "[fmt:UYVY2X8/720x576 field:]",
          "[fmt:UYVY2X8/720x576 field:nope]", "[fmt:UYVY2X8/720x576 field:non]",
          "[fmt:UYVY2X8/720x576 field:nonex]", "[fmt:UYVY2X8/720x576 field none]",
          "[fmt:UYVY2X8/720x576 field=none]", "[fmt:UYVY2X8/720x576,field:none]",
          "[fmt:UYVY2X8/720x576field:none]", "[fmt:UYVY2X8/720x576 field:NONE]",
          "[fmt:UYVY2X8/720x576 fields:none]", "[field:none]", "[field:none fmt:UYVY2X8/720x576]",
          "[fmt:UYVY2X8/720x576 field:interlaced]", "[fmt:UYVY2X8/720x576 field:none field:top]",
          "[fmt:UYVY2X8/720x576 colorspace:srgb]", "[fmt:UYVY2X8/720x576 colorspace:nope]",
          "[fmt:UYVY2X8/720x576 color:srgb]", "[fmt:UYVY2X8/720x576 xfer:709 ycbcr:601]",
          // Rectangles, which no sub-device of a terminal has.
          "[crop:(0,0)/720x576]", "[compose:(0,0)/720x576]", "[(0,0)/720x576]", "[crop:(0,0)]",
          "[crop:0,0/720x576]", "[fmt:UYVY2X8/720x576 crop:(0,0)/720x576]",
          // What may follow.
          "[fmt:UYVY2X8/720x576],", "[fmt:UYVY2X8/720x576],,", "[fmt:UYVY2X8/720x576], ",
          "[fmt:UYVY2X8/720x576] x", "[fmt:UYVY2X8/720x576];", "[fmt:UYVY2X8/720x576],'nope':0 []",
          "[fmt:UYVY2X8/720x576][fmt:UYVY2X8/720x480]"})
        texts.push_back(pad + properties);
    for (const std::string& other :
         {entity, '\'' + entity, std::string("'nope':0 "), std::string("99999:0 "),
          '\'' + entity + "':9 ", '\'' + entity + "': ", '\'' + entity + "' ",
          '\'' + entity + "':0:0 ", '"' + entity + "\":0", '\'' + entity + "x':0 "})
        texts.push_back(other + "[fmt:UYVY2X8/720x576]");
    texts.push_back(good + good);
    texts.push_back("," + good);
    return texts;
}

}  // namespace ZR::test
