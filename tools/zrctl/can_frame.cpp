#include "tools/zrctl/can_frame.h"

#include <linux/can.h>

#include <algorithm>
#include <charconv>
#include <optional>

#include "tools/zrctl/arguments.h"

namespace zrctl {
namespace {

constexpr std::size_t standardDigits = 3;
constexpr std::size_t extendedDigits = 8;
constexpr int hexadecimal = 16;

/// Reads hexadecimal digits and nothing else.
std::optional<std::uint32_t> hexNumber(const std::string& text) {
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number, hexadecimal);
    if (error != std::errc() || rest != end)
        return std::nullopt;
    return number;
}

[[noreturn]] void refuse(const std::string& frame, const std::string& reason) {
    throw UsageError("frame " + quote(frame) + ": " + reason);
}

std::uint32_t parseIdentifier(const std::string& frame, const std::string& text) {
    const auto id = hexNumber(text);
    if (!id || (text.size() != standardDigits && text.size() != extendedDigits))
        refuse(frame, "give 3 or 8 hexadecimal digits of identifier before the #");
    if (text.size() == standardDigits) {
        if (*id > CAN_SFF_MASK)
            refuse(frame,
                   "a standard identifier is at most 7FF; write an extended one with 8 "
                   "digits");
        return *id;
    }
    if (*id > CAN_EFF_MASK)
        refuse(frame, "an extended identifier is at most 1FFFFFFF");
    if (*id <= CAN_SFF_MASK)
        refuse(frame,
               "the library sends an identifier below 800 as a standard one; write it with "
               "3 digits");
    return *id;
}

/// Two digits a byte; a dot may stand between bytes.
void parseData(const std::string& frame, const std::string& text, ZR::ZRCANMessage& message) {
    std::size_t position = 0;
    while (position < text.size()) {
        const auto byte = hexNumber(text.substr(position, 2));
        if (!byte || text.size() - position < 2)
            refuse(frame, "give two hexadecimal digits for each byte of data");
        if (message.length == CAN_MAX_DLEN)
            refuse(frame, "a frame has at most 8 bytes of data");
        message.data[message.length++] = static_cast<std::uint8_t>(*byte);
        position += 2;
        if (position + 1 < text.size() && text[position] == '.')
            ++position;
    }
}

void appendHex(std::string& text, std::uint32_t number, std::size_t digits) {
    constexpr char names[] = "0123456789ABCDEF";
    constexpr unsigned int bitsPerDigit = 4;
    for (std::size_t digit = digits; digit-- > 0;)
        text += names[number >> (digit * bitsPerDigit) & 0xF];
}

}  // namespace

ZR::ZRCANMessage parseCanFrame(const std::string& text) {
    const std::size_t separator = text.find('#');
    if (separator == std::string::npos)
        refuse(text, "write ID#DATA, as in 123#1122 or 12345678#");
    const std::string data = text.substr(separator + 1);
    if (data.rfind('#', 0) == 0)
        refuse(text, "the library sends no CAN FD frames");
    if (data.rfind('R', 0) == 0 || data.rfind('r', 0) == 0)
        refuse(text, "the library sends no remote frames");
    ZR::ZRCANMessage message{};
    message.id = parseIdentifier(text, text.substr(0, separator));
    parseData(text, data, message);
    return message;
}

std::string canDataText(const ZR::ZRCANMessage& message) {
    std::string text;
    if ((message.id & CAN_RTR_FLAG) != 0)
        return text;
    const std::size_t length = std::min<std::size_t>(message.length, CAN_MAX_DLEN);
    for (std::size_t i = 0; i < length; ++i)
        appendHex(text, message.data[i], 2);
    return text;
}

std::string canFrameText(const ZR::ZRCANMessage& message) {
    std::string text;
    if ((message.id & CAN_ERR_FLAG) != 0)
        appendHex(text, message.id & (CAN_ERR_MASK | CAN_ERR_FLAG), extendedDigits);
    else if ((message.id & CAN_EFF_FLAG) != 0)
        appendHex(text, message.id & CAN_EFF_MASK, extendedDigits);
    else
        appendHex(text, message.id & CAN_SFF_MASK, standardDigits);
    text += '#';
    if ((message.id & CAN_RTR_FLAG) == 0)
        return text + canDataText(message);
    text += 'R';
    // candump names the length of a remote frame only where there is one.
    return message.length == 0 ? text : text + std::to_string(message.length);
}

CanFilter parseCanFilter(const std::string& text) {
    const std::size_t separator = text.find(':');
    const std::string idText = text.substr(0, separator);
    const auto id = hexNumber(idText);
    const auto mask =
        separator == std::string::npos ? std::nullopt : hexNumber(text.substr(separator + 1));
    if (!id || !mask)
        throw UsageError("filter " + quote(text) +
                         "; give ID:MASK in hexadecimal digits, as in 123:7FF");
    const bool extended = idText.size() == extendedDigits;
    // The bit that means "all but these" in a filter's identifier is the error flag of a frame.
    if ((*id & CAN_ERR_FLAG) != 0 || ((*mask & CAN_ERR_FLAG) != 0))
        throw UsageError("filter " + quote(text) +
                         "; the flag 20000000 is not for filters of frames");
    return {extended ? *id | CAN_EFF_FLAG : *id, *mask};
}

}  // namespace zrctl
