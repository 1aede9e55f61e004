#include "tests/platform/media_controller/media_texts.h"

namespace ZR::test {
namespace {

std::string pad(const std::string& entity, int number) {
    return '\'' + entity + "':" + std::to_string(number);
}

std::string decoderText(const std::string& decoder, const std::string& size,
                        const std::string& field) {
    return pad(decoder, 0) + " [fmt:UYVY2X8/" + size + field + ']';
}

/// The end of each path: sink and source pad of the interface.
std::string interfaceText(const std::string& interface, const std::string& size,
                          const std::string& field) {
    return "," + pad(interface, 0) + " [fmt:UYVY2X8/" + size + "@1/50" + field + "]," +
           pad(interface, 2) + " [fmt:AYUV32/" + size + "@1/50" + field + ']';
}

std::string muxText(const std::string& mux, bool isQuad, const std::string& size,
                    const std::string& field) {
    return "," + pad(mux, isQuad ? 2 : 5) + " [fmt:UYVY2X8/" + size + field + ']';
}

/// A few of the characters that mean something, other ones from place to place.
std::string othersAt(std::size_t place) {
    const std::string all = "'\" :->[]0951,/x@(UfZ\t";
    std::string some;
    for (std::size_t i = 0; i < 5; ++i)
        some += all[(place * 5 + i) % all.size()];
    return some;
}

}  // namespace

std::vector<std::string> terminalLinkTexts(bool isQuad, const std::string& tw9912,
                                           const std::string& adv7180) {
    const std::string csi1 = isQuad ? "ipu2_csi1" : "ipu1_csi1";
    const int muxSource = isQuad ? 2 : 5;
    const auto link = [](const std::string& source, const std::string& sink) {
        return source + " -> " + sink + "[1]";
    };
    return {link(pad(tw9912, 0), pad(csi1 + "_mux", isQuad ? 1 : 4)),
            link(pad(csi1 + "_mux", muxSource), pad(csi1, 0)),
            link(pad(csi1, 2), pad(csi1 + " capture", 0)),
            link(pad(adv7180, 0), pad("imx6-mipi-csi2", 0)),
            link(pad("imx6-mipi-csi2", 1), pad("ipu1_csi0_mux", 0)),
            link(pad("ipu1_csi0_mux", muxSource), pad("ipu1_csi0", 0)),
            link(pad("ipu1_csi0", 2), pad("ipu1_csi0 capture", 0))};
}

std::vector<std::string> terminalFormatTexts(bool isQuad, const std::string& tw9912,
                                             const std::string& adv7180) {
    const std::string csi1 = isQuad ? "ipu2_csi1" : "ipu1_csi1";
    const std::string none = " field:none";
    const std::string csi1Field = isQuad ? none : "";
    std::vector<std::string> texts;
    for (const std::string size : {"720x576", "720x480"}) {
        texts.push_back(decoderText(tw9912, size, csi1Field) +
                        muxText(csi1 + "_mux", isQuad, size, csi1Field) +
                        interfaceText(csi1, size, csi1Field));
        const std::string receiver = " [fmt:UYVY2X8/" + size + none + ']';
        texts.push_back(decoderText(adv7180, size, none) + "," + pad("imx6-mipi-csi2", 0) +
                        receiver + "," + pad("imx6-mipi-csi2", 1) + receiver +
                        muxText("ipu1_csi0_mux", isQuad, size, none) +
                        interfaceText("ipu1_csi0", size, none) + ",");
    }
    return texts;
}

std::vector<std::string> cutOff(const std::string& text) {
    std::vector<std::string> texts;
    for (std::size_t size = 0; size < text.size(); ++size)
        texts.push_back(text.substr(0, size));
    return texts;
}

std::vector<std::string> withOtherCharacters(const std::string& text) {
    std::vector<std::string> texts;
    for (std::size_t at = 0; at < text.size(); ++at) {
        texts.push_back(std::string(text).erase(at, 1));
        texts.push_back(std::string(text).insert(at, 1, text[at]));
        for (const char other : othersAt(at))
            texts.push_back(std::string(text).replace(at, 1, 1, other));
    }
    return texts;
}

}  // namespace ZR::test
