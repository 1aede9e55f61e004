#pragma once

namespace ZR {

/// Result codes of the library's operations; one code space serves all classes.
///
/// Operations return them as `unsigned int`. The values are part of the interface.
enum ZRResult : unsigned int {
    ResultSuccess = 0,           ///< done
    ResultFailure = 1,           ///< generic failure; the operation says which
    ResultOpenFailed = 2,        ///< a file or device cannot be opened; unknown CAN port
    ResultWrongType = 3,         ///< wrong type, already initialised, or no controller
    ResultSocketFailed = 4,      ///< socket set-up failed
    ResultReadFailed = 5,        ///< read failed or nothing to read
    ResultWriteFailed = 6,       ///< write failed
    ResultSendFailed = 7,        ///< CAN send failed
    ResultInvalidState = 10,     ///< impossible state read, or a device invalid for the operation
    ResultNotSupported = 11,     ///< not supported for this type, device or stream
    ResultPortOutOfRange = 20,   ///< no such port
    ResultValueOutOfRange = 24,  ///< value out of range or unknown requested state
    ResultAlreadyPresent = 25,   ///< already present
};

/// Returns the meaning of a result code in a few words, or "unknown result code".
/// The text is static; callable from any thread.
constexpr const char* resultText(unsigned int result) {
    switch (result) {
        case ResultSuccess:
            return "success";
        case ResultFailure:
            return "generic failure";
        case ResultOpenFailed:
            return "file or device cannot be opened";
        case ResultWrongType:
            return "wrong type or already initialised";
        case ResultSocketFailed:
            return "socket set-up failed";
        case ResultReadFailed:
            return "read failed";
        case ResultWriteFailed:
            return "write failed";
        case ResultSendFailed:
            return "send failed";
        case ResultInvalidState:
            return "invalid state or device";
        case ResultNotSupported:
            return "not supported";
        case ResultPortOutOfRange:
            return "port out of range";
        case ResultValueOutOfRange:
            return "value out of range";
        case ResultAlreadyPresent:
            return "already present";
        default:
            return "unknown result code";
    }
}

}  // namespace ZR
