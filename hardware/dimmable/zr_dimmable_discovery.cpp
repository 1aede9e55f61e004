#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <initializer_list>
#include <mutex>
#include <string>

#include "common/zrapi_common/zr_debug.h"
#include "common/zrapi_common/zr_eeprom.h"
#include "common/zrapi_utility/zr_file_access.h"
#include "hardware/dimmable/dimmable_internal.h"
#include "hardware/print_line_internal.h"

namespace ZR {

std::mutex ZRDimmable::displayMutex;
std::mutex ZRDimmable::beeperMutex;
std::mutex ZRDimmable::LEDMutex;
unsigned int ZRDimmable::debugSection = ZRDebug::insertNewDebugSection("zr_dimmable");

namespace {

constexpr char initialDisplayBrightness[] = "/sys/class/leds/bl:display/brightness";
constexpr char platformDisplayBrightness[] =
    "/sys/devices/platform/pwm-backlight.0/backlight/pwm-backlight.0/brightness";
constexpr char classDisplayBrightness[] = "/sys/class/backlight/backlight/brightness";
constexpr char otherDisplayBrightness[] = "/sys/class/backlight/pwm-backlight.0/brightness";
constexpr char keyBrightness[] = "/sys/class/leds/bl:key/brightness";
constexpr char keyMaxBrightness[] = "/sys/class/leds/bl:key/max_brightness";
constexpr char keyTrigger[] = "/sys/class/leds/bl:key/trigger";
constexpr char encoderBrightness[] = "/sys/class/leds/bl:enc/brightness";
constexpr char encoderMaxBrightness[] = "/sys/class/leds/bl:enc/max_brightness";
constexpr char rgbBrightness[] = "/sys/class/leds/user:rgb/brightness";
constexpr char otherRgbBrightness[] = "/sys/class/leds/sys:status:rgb/brightness";
constexpr char beeperVolume[] = "/sys/bus/platform/devices/pwm-speaker.0/volume";

constexpr unsigned char raisedMinimumBoard = 6;
constexpr unsigned int raisedMinimum = 10;

bool isReadable(const std::string& path) {
    int ignored = -1;
    return readIntegerFromFile(path, &ignored) == 0;
}

/// An LED whose full scale exceeds one byte takes 0xRRGGBB.
bool takesColor(const char* maxBrightnessFile) {
    int maximum = 0;
    return readIntegerFromFile(maxBrightnessFile, &maximum) == 0 && maximum > fullScale;
}

/// Detaches the key illumination from any kernel trigger, so that its brightness rules it. A key
/// LED without triggers works as it is: failures are ignored.
void detachKeyTrigger() {
    int descriptor = -1;
    do {
        descriptor = ::open(keyTrigger, O_RDWR | O_CLOEXEC);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0)
        return;
    constexpr char none[] = {'n', 'o', 'n', 'e'};
    ssize_t written = -1;
    do {
        written = ::write(descriptor, none, sizeof none);
    } while (written < 0 && errno == EINTR);
    (void)::close(descriptor);
}

/// Runs one step of opening; a step that fails must not keep the following devices from theirs.
template <typename Step>
bool succeeds(Step step) {
    try {
        step();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

/// Opens a device; from here on its stream raises what goes wrong with it.
void openDevice(AttributeStream& stream, const std::string& path) {
    stream.exceptions(std::ios_base::badbit | std::ios_base::failbit);
    stream.open(path);
}

void closeDevice(AttributeStream& stream) noexcept {
    try {
        if (stream.is_open())
            stream.close();
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch)
        // The stream raises a failed close; a destructor must not.
    }
}

}  // namespace

ZRDimmable* ZRDimmable::getInstance() {
    static ZRDimmable instance;
    return &instance;
}

ZRDimmable::ZRDimmable()
    : displayBacklightPath(initialDisplayBrightness),
      keyBacklightPath(keyBrightness),
      encoderBacklightPath(encoderBrightness),
      beeperVolumePath(beeperVolume),
      rgbLedPath(rgbBrightness) {
    findDisplayBacklight();
    findRgbLed();
    applyBoardMinimum();
    detachKeyTrigger();
    openDevices();
}

ZRDimmable::~ZRDimmable() {
    closeDevice(displayBacklightFile);
    closeDevice(keyBacklightFile);
    closeDevice(rgbLedFile);
    closeDevice(beeperVolumeFile);
    // The encoder illumination is left to its member's own end, on purpose.
}

/// The initial "bl:display" path is never probed; it is replaced on purpose.
void ZRDimmable::findDisplayBacklight() {
    for (const char* const candidate : {platformDisplayBrightness, classDisplayBrightness}) {
        displayBacklightPath = candidate;
        if (isReadable(displayBacklightPath))
            return;
    }
    displayBacklightPath = otherDisplayBrightness;
}

void ZRDimmable::findRgbLed() {
    if (isReadable(rgbLedPath))
        return;
    rgbLedPath = otherRgbBrightness;
    if (isReadable(rgbLedPath))
        printLine({"OK: ", rgbLedPath});
}

void ZRDimmable::applyBoardMinimum() {
    ZREEPROMMessageData data{};
    // A failed read leaves the record zero and with it the default minimum.
    (void)ZREeprom::readDataFromEeprom(EepromReadDisplayData, data);
    if (data.data[0] == raisedMinimumBoard)
        minDisplayBacklightIntensity = raisedMinimum;
}

void ZRDimmable::openDevices() {
    std::unique_lock<std::mutex> ledLock(LEDMutex);
    std::unique_lock<std::mutex> beeperLock(beeperMutex);
    std::unique_lock<std::mutex> displayLock(displayMutex);
    if (!succeeds([this] { openDevice(displayBacklightFile, displayBacklightPath); }))
        printLine({"Error opening display backlight device file!"});
    (void)succeeds([this] {
        openDevice(keyBacklightFile, keyBacklightPath);
        keyColorSupported = takesColor(keyMaxBrightness);
    });
    (void)succeeds([this] { openDevice(rgbLedFile, rgbLedPath); });
    (void)succeeds([this] { openDevice(beeperVolumeFile, beeperVolumePath); });
    (void)succeeds([this] {
        openDevice(encoderBacklightFile, encoderBacklightPath);
        encoderColorSupported = takesColor(encoderMaxBrightness);
    });
    ledLock.unlock();
    beeperLock.unlock();
    displayLock.unlock();
}

}  // namespace ZR
