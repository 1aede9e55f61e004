#include "hardware/dimmable/zr_dimmable.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <exception>
#include <ios>
#include <limits>
#include <mutex>

#include "common/zrapi_common/zr_debug.h"
#include "common/zrapi_common/zr_result.h"
#include "hardware/dimmable/dimmable_internal.h"
#include "hardware/report_internal.h"

namespace ZR {
namespace {

/// Takes the lock, or none for a device that is used without one.
std::unique_lock<std::mutex> lockIfAny(std::mutex* mutex) {
    return mutex == nullptr ? std::unique_lock<std::mutex>() : std::unique_lock<std::mutex>(*mutex);
}

/// Forgets what an earlier operation left behind; false when the device is not open.
bool makeUsable(AttributeStream& stream) {
    if (!stream.good())
        stream.clear();
    return stream.is_open() && stream.good();
}

void writeValue(AttributeStream& stream, unsigned int value) {
    std::array<char, std::numeric_limits<unsigned int>::digits10 + 2> text{};
    char* end = std::to_chars(text.begin(), text.end() - 1, value).ptr;
    *end++ = '\n';
    stream.writeLine({text.data(), static_cast<std::size_t>(end - text.data())});
}

int readValue(AttributeStream& stream) {
    AttributeStream::Line line;  // NOLINT(*-init): a page, filled by the read
    stream.readLine(line);
    return parseRaw(line.data());
}

}  // namespace

unsigned int ZRDimmable::getIntensity(unsigned int* intensity, ZRDimmableDevice device) {
    AttributeStream* const stream = intensityStream(device);
    if (stream == nullptr)
        return ResultFailure;
    const unsigned int minimum =
        device == DisplayBacklight ? minDisplayBacklightIntensity.load() : 0;
    {
        const std::unique_lock<std::mutex> lock = lockIfAny(intensityMutex(device));
        const unsigned int result = readIntensity(*stream, intensity, device);
        if (result != ResultSuccess)
            return result;
    }
    if (*intensity >= minimum)
        return ResultSuccess;
    // Reading a display that is too dark raises it; setIntensity() takes the lock itself.
    const unsigned int raised = minDisplayBacklightIntensity;
    if (setIntensity(raised, DisplayBacklight) == ResultSuccess)
        *intensity = raised;
    return ResultSuccess;
}

unsigned int ZRDimmable::readIntensity(AttributeStream& stream, unsigned int* intensity,
                                       ZRDimmableDevice device) {
    // The texts name the display for every device; kept on purpose.
    const char* text = "Reading from display backlight device file (file != good()) ";
    unsigned int result = ResultReadFailed;
    try {
        if (makeUsable(stream)) {
            const int raw = readValue(stream);
            const bool percent = intensityRule(device, isColorSupported(device), 0).readsPercent;
            *intensity = static_cast<unsigned int>(percent ? rawToPercent(raw) : raw);
            return ResultSuccess;
        }
        stream.clear();
        result = ResultFailure;
    } catch (const std::ios_base::failure&) {
        text = "Reading from display backlight device file (std::ifstream::failure) ";
    } catch (const std::exception&) {
        text = "Reading from display backlight device file (std::exception) ";
    }
    report(debugSection, "%s%d", text, static_cast<int>(device));
    // The display's stream is cleared whatever the device, on purpose: the others are cleared by
    // their next operation.
    if (result == ResultReadFailed)
        displayBacklightFile.clear();
    return result;
}

unsigned int ZRDimmable::setIntensity(unsigned int intensity, ZRDimmableDevice device) {
    AttributeStream* const stream = intensityStream(device);
    if (stream == nullptr)
        return ResultInvalidState;
    const std::unique_lock<std::mutex> lock = lockIfAny(intensityMutex(device));
    try {
        return writeIntensity(*stream, intensity, device);
    } catch (const std::exception&) {
        report(debugSection, "%s%d", "Writing intensity to device file ", static_cast<int>(device));
        return ResultWriteFailed;
    }
}

unsigned int ZRDimmable::writeIntensity(AttributeStream& stream, unsigned int intensity,
                                        ZRDimmableDevice device) {
    if (!makeUsable(stream))
        return ResultFailure;
    const IntensityRule rule =
        intensityRule(device, isColorSupported(device), minDisplayBacklightIntensity);
    // The reports of this function are not guarded: one that raises makes the operation fail.
    if (intensity < rule.lowest || intensity > rule.highest) {
        ZRDebug::debugPrintError(ZRDebug::levelError, debugSection, "%s%d%s%d",
                                 "Intensity out of range for device ", static_cast<int>(device),
                                 ", requested: ", static_cast<int>(intensity));
        return ResultValueOutOfRange;
    }
    writeValue(stream, rule.writesPercent ? percentToRaw(intensity) : intensity);
    if (!stream.good()) {
        stream.clear();
        ZRDebug::debugPrintError(ZRDebug::levelError, debugSection, "%s%d",
                                 "Writing intensity to dimmable device  ",
                                 static_cast<int>(device));
        return ResultWriteFailed;
    }
    return ResultSuccess;
}

unsigned int ZRDimmable::getColor(unsigned int* color, ZRDimmableDevice device) {
    if ((device == KeyBacklight || device == EncoderBacklight) && !isColorSupported(device))
        return ResultNotSupported;
    try {
        switch (device) {
            case KeyBacklight:
                return readColor(keyBacklightFile, color, device);
            case EncoderBacklight:
                return readColor(encoderBacklightFile, color, device);
            case RGBLED: {
                const std::lock_guard<std::mutex> lock(LEDMutex);
                return readColor(rgbLedFile, color, device);
            }
            default:
                return ResultFailure;
        }
    } catch (const std::exception&) {
        report(debugSection, "%s", "Reading from LED device file");
        return ResultReadFailed;
    }
}

unsigned int ZRDimmable::readColor(AttributeStream& stream, unsigned int* color,
                                   ZRDimmableDevice device) {
    if (!stream.is_open() || !stream.good())
        return ResultFailure;
    // Not guarded: a report that raises ends in the report of getColor().
    const auto reportFailure = [device] {
        ZRDebug::debugPrintError(ZRDebug::levelError, debugSection, "%s%d",
                                 "Reading from LED device file ", static_cast<int>(device));
    };
    int value = 0;
    try {
        value = readValue(stream);
    } catch (const std::exception&) {
        reportFailure();
    }
    // A value that raised is reported here a second time; one without a line end only here.
    if (!stream.good()) {
        stream.clear();
        reportFailure();
        return ResultReadFailed;
    }
    *color = static_cast<unsigned int>(value);
    return ResultSuccess;
}

unsigned int ZRDimmable::setColor(unsigned int color, ZRDimmableDevice device) {
    switch (device) {
        case KeyBacklight:
            keyColor = color;
            return setIntensity(color, KeyBacklight);
        case EncoderBacklight:
            encoderColor = color;
            return setIntensity(color, EncoderBacklight);
        case RGBLED:
            return writeRgbLed(color);
        default:
            return ResultFailure;
    }
}

unsigned int ZRDimmable::writeRgbLed(unsigned int color) {
    const std::lock_guard<std::mutex> lock(LEDMutex);
    const char* text = "Writing to LED device file";
    try {
        if (!rgbLedFile.is_open() || !rgbLedFile.good())
            return ResultFailure;
        writeValue(rgbLedFile, color & highestColor);
        if (rgbLedFile.good())
            return ResultSuccess;
    } catch (const std::exception&) {
        text = "WRITING LED device file";
    }
    // Cleared also after an exception: no later operation on this LED would do it.
    rgbLedFile.clear();
    report(debugSection, "%s", text);
    return ResultWriteFailed;
}

unsigned int ZRDimmable::setMinDisplayBacklightIntensity(unsigned int intensity) {
    minDisplayBacklightIntensity = intensity;
    return enforceMinimum(intensity);
}

unsigned int ZRDimmable::getMinDisplayBacklightIntensity(unsigned int* intensity) {
    *intensity = minDisplayBacklightIntensity;
    return enforceMinimum(*intensity);
}

unsigned int ZRDimmable::enforceMinimum(unsigned int minimum) {
    unsigned int current = 0;
    if (getIntensity(&current, DisplayBacklight) != ResultSuccess)
        return ResultFailure;
    if (minimum > current)
        return setIntensity(minimum, DisplayBacklight);
    return ResultSuccess;
}

bool ZRDimmable::isColorSupported(ZRDimmableDevice device) const {
    switch (device) {
        case KeyBacklight:
            return keyColorSupported;
        case EncoderBacklight:
            return encoderColorSupported;
        case RGBLED:
            return true;
        default:
            return false;
    }
}

AttributeStream* ZRDimmable::intensityStream(ZRDimmableDevice device) {
    switch (device) {
        case DisplayBacklight:
            return &displayBacklightFile;
        case KeyBacklight:
            return &keyBacklightFile;
        case EncoderBacklight:
            return &encoderBacklightFile;
        case Beeper:
            return &beeperVolumeFile;
        default:
            return nullptr;
    }
}

/// The key and the encoder illumination are used without any lock, on purpose.
std::mutex* ZRDimmable::intensityMutex(ZRDimmableDevice device) {
    switch (device) {
        case DisplayBacklight:
            return &displayMutex;
        case Beeper:
            return &beeperMutex;
        default:
            return nullptr;
    }
}

}  // namespace ZR
