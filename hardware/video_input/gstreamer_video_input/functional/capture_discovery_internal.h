#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace ZR {

/// The device tree's name of the i.MX6 DualLite, without the manufacturer.
constexpr std::string_view dualLiteComponent = "imx6dl";

/// What follows the last comma of a device tree's list of names, without blanks, control characters
/// and the NUL that ends each name. The whole text without a comma.
inline std::string lastCompatibleComponent(std::string_view text) {
    constexpr unsigned char blank = 0x20;
    const std::size_t comma = text.rfind(',');
    const std::size_t begin = comma == std::string_view::npos ? 0 : comma + 1;
    std::string component;
    for (const char character : text.substr(begin)) {
        if (static_cast<unsigned char>(character) > blank)
            component += character;
    }
    return component;
}

/// What an entity of the media controller is to the cameras.
enum class CaptureEntity {
    None,
    SharedDecoder,  ///< of the inputs 0 and 2
    SecondDecoder,  ///< of input 1
    SharedNode,     ///< capture node of the inputs 0 and 2
    SecondNode,     ///< capture node of input 1
};

/// Tells by its name what an entity is. Drivers append the bus address to a decoder's name.
inline CaptureEntity captureEntity(std::string_view name, bool quadCore) {
    const auto beginsWith = [name](std::string_view prefix) {
        return name.substr(0, prefix.size()) == prefix;
    };
    if (beginsWith("tw9912"))
        return CaptureEntity::SharedDecoder;
    if (beginsWith("adv7180"))
        return CaptureEntity::SecondDecoder;
    if (name == "ipu1_csi0 capture")
        return CaptureEntity::SecondNode;
    if (name == (quadCore ? "ipu2_csi1 capture" : "ipu1_csi1 capture"))
        return CaptureEntity::SharedNode;
    return CaptureEntity::None;
}

/// The links from each decoder to its capture node, in the order in which they are enabled.
/// @param twName   whole entity name of the decoder of the inputs 0 and 2
/// @param advName  whole entity name of the decoder of input 1
inline std::array<std::string, 7> captureLinks(const std::string& twName,
                                               const std::string& advName, bool quadCore) {
    if (quadCore) {
        return {"'" + twName + "':0 -> 'ipu2_csi1_mux':1[1]",
                "'ipu2_csi1_mux':2 -> 'ipu2_csi1':0[1]",
                "'ipu2_csi1':2 -> 'ipu2_csi1 capture':0[1]",
                "'" + advName + "':0 -> 'imx6-mipi-csi2':0[1]",
                "'imx6-mipi-csi2':1 -> 'ipu1_csi0_mux':0[1]",
                "'ipu1_csi0_mux':2 -> 'ipu1_csi0':0[1]",
                "'ipu1_csi0':2 -> 'ipu1_csi0 capture':0[1]"};
    }
    return {"'" + twName + "':0 -> 'ipu1_csi1_mux':4[1]",
            "'ipu1_csi1_mux':5 -> 'ipu1_csi1':0[1]",
            "'ipu1_csi1':2 -> 'ipu1_csi1 capture':0[1]",
            "'" + advName + "':0 -> 'imx6-mipi-csi2':0[1]",
            "'imx6-mipi-csi2':1 -> 'ipu1_csi0_mux':0[1]",
            "'ipu1_csi0_mux':5 -> 'ipu1_csi0':0[1]",
            "'ipu1_csi0':2 -> 'ipu1_csi0 capture':0[1]"};
}

}  // namespace ZR
