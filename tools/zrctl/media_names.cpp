#include "tools/zrctl/media_names.h"

#include <linux/media-bus-format.h>
#include <linux/media.h>
#include <linux/videodev2.h>

#include <array>
#include <cstdio>

namespace zrctl {
namespace {

struct NamedNumber {
    std::uint32_t number;
    const char* name;
};

constexpr NamedNumber entityFunctions[] = {
    {MEDIA_ENT_F_IO_V4L, "video node"},
    {MEDIA_ENT_F_IO_VBI, "VBI node"},
    {MEDIA_ENT_F_IO_SWRADIO, "radio node"},
    {MEDIA_ENT_F_CAM_SENSOR, "camera sensor"},
    {MEDIA_ENT_F_FLASH, "flash"},
    {MEDIA_ENT_F_LENS, "lens"},
    {MEDIA_ENT_F_TUNER, "tuner"},
    {MEDIA_ENT_F_ATV_DECODER, "analog video decoder"},
    {MEDIA_ENT_F_DV_DECODER, "digital video decoder"},
    {MEDIA_ENT_F_DV_ENCODER, "digital video encoder"},
    {MEDIA_ENT_F_VID_MUX, "video multiplexer"},
    {MEDIA_ENT_F_VID_IF_BRIDGE, "video interface bridge"},
    {MEDIA_ENT_F_PROC_VIDEO_COMPOSER, "video composer"},
    {MEDIA_ENT_F_PROC_VIDEO_PIXEL_FORMATTER, "pixel formatter"},
    {MEDIA_ENT_F_PROC_VIDEO_PIXEL_ENC_CONV, "pixel encoding converter"},
    {MEDIA_ENT_F_PROC_VIDEO_LUT, "look-up table"},
    {MEDIA_ENT_F_PROC_VIDEO_SCALER, "video scaler"},
    {MEDIA_ENT_F_PROC_VIDEO_STATISTICS, "video statistics"},
    {MEDIA_ENT_F_PROC_VIDEO_ENCODER, "video encoder"},
    {MEDIA_ENT_F_PROC_VIDEO_DECODER, "video decoder"},
};

constexpr NamedNumber busCodes[] = {
    {MEDIA_BUS_FMT_RGB565_1X16, "RGB565_1X16"},     {MEDIA_BUS_FMT_BGR565_2X8_BE, "BGR565_2X8_BE"},
    {MEDIA_BUS_FMT_BGR565_2X8_LE, "BGR565_2X8_LE"}, {MEDIA_BUS_FMT_RGB565_2X8_BE, "RGB565_2X8_BE"},
    {MEDIA_BUS_FMT_RGB565_2X8_LE, "RGB565_2X8_LE"}, {MEDIA_BUS_FMT_BGR888_1X24, "BGR888_1X24"},
    {MEDIA_BUS_FMT_RGB888_1X24, "RGB888_1X24"},     {MEDIA_BUS_FMT_Y8_1X8, "Y8_1X8"},
    {MEDIA_BUS_FMT_UYVY8_2X8, "UYVY8_2X8"},         {MEDIA_BUS_FMT_VYUY8_2X8, "VYUY8_2X8"},
    {MEDIA_BUS_FMT_YUYV8_2X8, "YUYV8_2X8"},         {MEDIA_BUS_FMT_YVYU8_2X8, "YVYU8_2X8"},
    {MEDIA_BUS_FMT_Y10_1X10, "Y10_1X10"},           {MEDIA_BUS_FMT_Y12_1X12, "Y12_1X12"},
    {MEDIA_BUS_FMT_UYVY8_1X16, "UYVY8_1X16"},       {MEDIA_BUS_FMT_VYUY8_1X16, "VYUY8_1X16"},
    {MEDIA_BUS_FMT_YUYV8_1X16, "YUYV8_1X16"},       {MEDIA_BUS_FMT_YVYU8_1X16, "YVYU8_1X16"},
    {MEDIA_BUS_FMT_VUY8_1X24, "VUY8_1X24"},         {MEDIA_BUS_FMT_YUV8_1X24, "YUV8_1X24"},
    {MEDIA_BUS_FMT_YUV10_1X30, "YUV10_1X30"},       {MEDIA_BUS_FMT_AYUV8_1X32, "AYUV8_1X32"},
    {MEDIA_BUS_FMT_SBGGR8_1X8, "SBGGR8_1X8"},       {MEDIA_BUS_FMT_SGBRG8_1X8, "SGBRG8_1X8"},
    {MEDIA_BUS_FMT_SGRBG8_1X8, "SGRBG8_1X8"},       {MEDIA_BUS_FMT_SRGGB8_1X8, "SRGGB8_1X8"},
    {MEDIA_BUS_FMT_SBGGR10_1X10, "SBGGR10_1X10"},   {MEDIA_BUS_FMT_SGBRG10_1X10, "SGBRG10_1X10"},
    {MEDIA_BUS_FMT_SGRBG10_1X10, "SGRBG10_1X10"},   {MEDIA_BUS_FMT_SRGGB10_1X10, "SRGGB10_1X10"},
    {MEDIA_BUS_FMT_SBGGR12_1X12, "SBGGR12_1X12"},   {MEDIA_BUS_FMT_SGBRG12_1X12, "SGBRG12_1X12"},
    {MEDIA_BUS_FMT_SGRBG12_1X12, "SGRBG12_1X12"},   {MEDIA_BUS_FMT_SRGGB12_1X12, "SRGGB12_1X12"},
};

constexpr NamedNumber fields[] = {
    {V4L2_FIELD_ANY, "any"},
    {V4L2_FIELD_NONE, "none"},
    {V4L2_FIELD_TOP, "top"},
    {V4L2_FIELD_BOTTOM, "bottom"},
    {V4L2_FIELD_INTERLACED, "interlaced"},
    {V4L2_FIELD_SEQ_TB, "seq-tb"},
    {V4L2_FIELD_SEQ_BT, "seq-bt"},
    {V4L2_FIELD_ALTERNATE, "alternate"},
    {V4L2_FIELD_INTERLACED_TB, "interlaced-tb"},
    {V4L2_FIELD_INTERLACED_BT, "interlaced-bt"},
};

bool isPrintable(char character) {
    return character >= 0x20 && character < 0x7F;
}

std::string hexadecimal(std::uint32_t number) {
    std::array<char, 11> text{};
    (void)std::snprintf(text.data(), text.size(), "0x%04x", static_cast<unsigned int>(number));
    return text.data();
}

template <std::size_t count>
std::string nameOf(std::uint32_t number, const NamedNumber (&table)[count]) {
    for (const NamedNumber& entry : table) {
        if (entry.number == number)
            return entry.name;
    }
    return hexadecimal(number);
}

std::string sizeText(const FrameFormat& format) {
    return std::to_string(format.width) + "x" + std::to_string(format.height);
}

std::string intervalText(const FrameInterval& interval) {
    return "@" + std::to_string(interval.numerator) + "/" + std::to_string(interval.denominator);
}

}  // namespace

std::string entityFunctionText(std::uint32_t function) {
    return nameOf(function, entityFunctions);
}

std::string busCodeText(std::uint32_t code) {
    return nameOf(code, busCodes);
}

std::string fieldText(std::uint32_t field) {
    return nameOf(field, fields);
}

std::string pixelFormatText(std::uint32_t fourcc) {
    constexpr std::uint32_t bigEndian = 1U << 31;
    std::string text;
    for (unsigned int shift = 0; shift < 32; shift += 8)
        text += static_cast<char>(((fourcc & ~bigEndian) >> shift) & 0xFF);
    for (const char character : text) {
        if (!isPrintable(character))
            return hexadecimal(fourcc);
    }
    // Short names are filled up with blanks.
    text.erase(text.find_last_not_of(' ') + 1);
    if (text.empty())
        return hexadecimal(fourcc);
    return (fourcc & bigEndian) == 0 ? text : text + "-BE";
}

std::string printable(const std::string& name) {
    std::string text = name;
    for (char& character : text) {
        if (!isPrintable(character))
            character = '?';
    }
    return text;
}

std::string padFormatText(const MediaPad& pad) {
    if (!pad.format)
        return "-";
    return busCodeText(pad.format->code) + "/" + sizeText(*pad.format) +
           (pad.interval ? intervalText(*pad.interval) : "") +
           " field:" + fieldText(pad.format->field);
}

std::string videoFormatText(const MediaEntity& entity) {
    if (!entity.format)
        return "-";
    return pixelFormatText(entity.format->code) + "/" + sizeText(*entity.format) +
           " field:" + fieldText(entity.format->field);
}

}  // namespace zrctl
