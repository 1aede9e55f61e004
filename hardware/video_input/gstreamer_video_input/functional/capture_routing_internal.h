#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ZR {

/// Control of a capture node that selects the decoder's input: a driver's own, without a name in
/// the kernel's headers.
constexpr unsigned int inputSelectControl = 0x009819C2;

/// A value that the input selection can have for one of the inputs that share a node.
struct InputSelection {
    int wanted;
    int wrong;  ///< the value that is changed; any other one is left alone
};

constexpr InputSelection inputSelection(int input) {
    return input == 0 ? InputSelection{0, 1} : InputSelection{1, 0};
}

/// Joins what stands around the sizes of a format text: "'NAME", then the pieces with the size
/// between each two.
template <std::size_t count>
std::string joinFormats(const std::string& name, const std::string_view (&pieces)[count],
                        const std::string& size) {
    std::size_t length = 1 + name.size() + (count - 1) * size.size();
    for (const std::string_view piece : pieces)
        length += piece.size();
    std::string text;
    text.reserve(length);
    text += '\'';
    text += name;
    text += pieces[0];
    for (std::size_t i = 1; i < count; ++i) {
        text += size;
        text += pieces[i];
    }
    return text;
}

/// The formats of the path of the inputs 0 and 2, from the decoder to the capture node. The frame
/// interval is that of PAL's fields for NTSC too, and the DualLite's text names no field: both kept,
/// the drivers answer to exactly these texts.
/// @param size  as in "720x576"
inline std::string sharedPathFormats(const std::string& twName, bool quadCore,
                                     const std::string& size) {
    constexpr std::string_view dualLite[] = {
        "':0 [fmt:UYVY2X8/", "],'ipu1_csi1_mux':5 [fmt:UYVY2X8/", "],'ipu1_csi1':0 [fmt:UYVY2X8/",
        "@1/50],'ipu1_csi1':2 [fmt:AYUV32/", "@1/50]"};
    constexpr std::string_view quad[] = {
        "':0 [fmt:UYVY2X8/", " field:none],'ipu2_csi1_mux':2 [fmt:UYVY2X8/",
        " field:none],'ipu2_csi1':0 [fmt:UYVY2X8/", "@1/50 field:none],'ipu2_csi1':2 [fmt:AYUV32/",
        "@1/50 field:none]"};
    return quadCore ? joinFormats(twName, quad, size) : joinFormats(twName, dualLite, size);
}

/// The formats of the path of input 1. The comma at the end is kept: every pad is set before the
/// parser complains of it.
/// @param size  as in "720x576"
inline std::string secondPathFormats(const std::string& advName, bool quadCore,
                                     const std::string& size) {
    constexpr std::string_view dualLite[] = {"':0 [fmt:UYVY2X8/",
                                             " field:none],'imx6-mipi-csi2':0 [fmt:UYVY2X8/",
                                             " field:none],'imx6-mipi-csi2':1 [fmt:UYVY2X8/",
                                             " field:none],'ipu1_csi0_mux':5 [fmt:UYVY2X8/",
                                             " field:none],'ipu1_csi0':0 [fmt:UYVY2X8/",
                                             "@1/50 field:none],'ipu1_csi0':2 [fmt:AYUV32/",
                                             "@1/50 field:none],"};
    constexpr std::string_view quad[] = {"':0 [fmt:UYVY2X8/",
                                         " field:none],'imx6-mipi-csi2':0 [fmt:UYVY2X8/",
                                         " field:none],'imx6-mipi-csi2':1 [fmt:UYVY2X8/",
                                         " field:none],'ipu1_csi0_mux':2 [fmt:UYVY2X8/",
                                         " field:none],'ipu1_csi0':0 [fmt:UYVY2X8/",
                                         "@1/50 field:none],'ipu1_csi0':2 [fmt:AYUV32/",
                                         "@1/50 field:none],"};
    return quadCore ? joinFormats(advName, quad, size) : joinFormats(advName, dualLite, size);
}

}  // namespace ZR
