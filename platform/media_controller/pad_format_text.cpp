#include <algorithm>
#include <iterator>

#include "platform/media_controller/pad_format_internal.h"

namespace ZR::media_controller {
namespace {

struct Word {
    std::string_view text;
    unsigned int value;
};

constexpr Word fields[] = {{"any", V4L2_FIELD_ANY},
                           {"none", V4L2_FIELD_NONE},
                           {"top", V4L2_FIELD_TOP},
                           {"bottom", V4L2_FIELD_BOTTOM},
                           {"interlaced", V4L2_FIELD_INTERLACED},
                           {"seq-tb", V4L2_FIELD_SEQ_TB},
                           {"seq-bt", V4L2_FIELD_SEQ_BT},
                           {"alternate", V4L2_FIELD_ALTERNATE},
                           {"interlaced-tb", V4L2_FIELD_INTERLACED_TB},
                           {"interlaced-bt", V4L2_FIELD_INTERLACED_BT}};

constexpr Word colorspaces[] = {{"default", V4L2_COLORSPACE_DEFAULT},
                                {"smpte170m", V4L2_COLORSPACE_SMPTE170M},
                                {"smpte240m", V4L2_COLORSPACE_SMPTE240M},
                                {"rec709", V4L2_COLORSPACE_REC709},
                                {"470m", V4L2_COLORSPACE_470_SYSTEM_M},
                                {"470bg", V4L2_COLORSPACE_470_SYSTEM_BG},
                                {"jpeg", V4L2_COLORSPACE_JPEG},
                                {"srgb", V4L2_COLORSPACE_SRGB},
                                {"oprgb", V4L2_COLORSPACE_OPRGB},
                                {"bt2020", V4L2_COLORSPACE_BT2020},
                                {"raw", V4L2_COLORSPACE_RAW},
                                {"dcip3", V4L2_COLORSPACE_DCI_P3}};

constexpr Word transferFunctions[] = {
    {"default", V4L2_XFER_FUNC_DEFAULT},     {"709", V4L2_XFER_FUNC_709},
    {"srgb", V4L2_XFER_FUNC_SRGB},           {"oprgb", V4L2_XFER_FUNC_OPRGB},
    {"smpte240m", V4L2_XFER_FUNC_SMPTE240M}, {"none", V4L2_XFER_FUNC_NONE},
    {"dcip3", V4L2_XFER_FUNC_DCI_P3},        {"smpte2084", V4L2_XFER_FUNC_SMPTE2084}};

constexpr Word encodings[] = {{"default", V4L2_YCBCR_ENC_DEFAULT},
                              {"601", V4L2_YCBCR_ENC_601},
                              {"709", V4L2_YCBCR_ENC_709},
                              {"xv601", V4L2_YCBCR_ENC_XV601},
                              {"xv709", V4L2_YCBCR_ENC_XV709},
                              {"bt2020", V4L2_YCBCR_ENC_BT2020},
                              {"bt2020c", V4L2_YCBCR_ENC_BT2020_CONST_LUM},
                              {"smpte240m", V4L2_YCBCR_ENC_SMPTE240M}};

constexpr Word quantizations[] = {{"default", V4L2_QUANTIZATION_DEFAULT},
                                  {"full-range", V4L2_QUANTIZATION_FULL_RANGE},
                                  {"lim-range", V4L2_QUANTIZATION_LIM_RANGE}};

/// Takes one of the words, whatever its case, and stores its value.
template <typename Value, std::size_t size>
bool takeWord(Text& text, const Word (&words)[size], bool withDigits, Value& value) {
    text.skipBlanks();
    const std::string_view taken = text.takeWord(withDigits);
    const Word* const found =
        std::find_if(std::begin(words), std::end(words),
                     [taken](const Word& word) { return isSameWord(word.text, taken); });
    if (found == std::end(words))
        return false;
    value = static_cast<Value>(found->value);
    return true;
}

bool takeSize(Text& text, unsigned int& width, unsigned int& height) {
    width = text.takeNumber();
    if (!text.take("x"))
        return false;
    height = text.takeNumber();
    return true;
}

bool takeFormat(Text& text, v4l2_mbus_framefmt& format) {
    text.skipBlanks();
    v4l2_mbus_framefmt taken{};
    taken.code = busFormatCode(text.takeUntil("/ "));
    if (taken.code == 0)
        return false;
    if (!text.take("/"))
        (void)text.take(" ");
    if (!takeSize(text, taken.width, taken.height))
        return false;
    format = taken;
    return true;
}

bool takeRectangle(Text& text, v4l2_rect& rectangle) {
    text.skipBlanks();
    if (!text.take("("))
        return false;
    rectangle.left = static_cast<int>(text.takeNumber());
    if (!text.take(","))
        return false;
    rectangle.top = static_cast<int>(text.takeNumber());
    return text.take(")") && text.take("/") && takeSize(text, rectangle.width, rectangle.height);
}

bool takeInterval(Text& text, v4l2_fract& interval) {
    interval.numerator = text.takeNumber();
    text.skipBlanks();
    if (!text.take("/"))
        return false;
    interval.denominator = text.takeNumber();
    return true;
}

enum class Taken { Property, Nothing, Error };

Taken takeProperty(Text& text, PadFormat& wanted) {
    v4l2_mbus_framefmt& format = wanted.format;
    bool isGood = true;
    if (text.take("fmt:"))
        isGood = takeFormat(text, format);
    else if (text.take("field:"))
        isGood = takeWord(text, fields, false, format.field);
    else if (text.take("colorspace:"))
        isGood = takeWord(text, colorspaces, true, format.colorspace);
    else if (text.take("xfer:"))
        isGood = takeWord(text, transferFunctions, true, format.xfer_func);
    else if (text.take("ycbcr:"))
        isGood = takeWord(text, encodings, true, format.ycbcr_enc);
    else if (text.take("quantization:"))
        isGood = takeWord(text, quantizations, true, format.quantization);
    else if (text.take("compose:"))
        isGood = takeRectangle(text, wanted.compose);
    else if (text.take("crop:") || text.front() == '(')
        isGood = takeRectangle(text, wanted.crop);
    else if (text.take("@"))
        isGood = takeInterval(text, wanted.interval);
    else
        return Taken::Nothing;
    return isGood ? Taken::Property : Taken::Error;
}

}  // namespace

bool takePadFormat(Text& text, PadFormat& wanted) {
    if (!text.take("["))
        return false;
    text.skipBlanks();
    // The first property may be a format without its "fmt:": names of formats begin in upper case.
    if (isUpperCase(text.front()) && !takeFormat(text, wanted.format))
        return false;
    Taken taken = Taken::Property;
    while (taken == Taken::Property) {
        text.skipBlanks();
        taken = takeProperty(text, wanted);
    }
    if (taken == Taken::Error || !text.take("]"))
        return false;
    text.skipBlanks();
    return true;
}

}  // namespace ZR::media_controller
