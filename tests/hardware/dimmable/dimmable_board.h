#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <mutex>
#include <string>
#include <vector>

#include "hardware/dimmable/zr_dimmable.h"
#include "tests/support/output_capture.h"
#include "tests/support/report_log.h"

/// The attribute files of the dimmable devices, and a look inside the one object.

namespace ZR::test {

inline constexpr char platformDisplay[] =
    "/sys/devices/platform/pwm-backlight.0/backlight/pwm-backlight.0/brightness";
inline constexpr char classDisplay[] = "/sys/class/backlight/backlight/brightness";
inline constexpr char otherDisplay[] = "/sys/class/backlight/pwm-backlight.0/brightness";
inline constexpr char neverDisplay[] = "/sys/class/leds/bl:display/brightness";
inline constexpr char keyFile[] = "/sys/class/leds/bl:key/brightness";
inline constexpr char keyMaximum[] = "/sys/class/leds/bl:key/max_brightness";
inline constexpr char keyTrigger[] = "/sys/class/leds/bl:key/trigger";
inline constexpr char encoderFile[] = "/sys/class/leds/bl:enc/brightness";
inline constexpr char encoderMaximum[] = "/sys/class/leds/bl:enc/max_brightness";
inline constexpr char rgbFile[] = "/sys/class/leds/user:rgb/brightness";
inline constexpr char otherRgbFile[] = "/sys/class/leds/sys:status:rgb/brightness";
inline constexpr char beeperFile[] = "/sys/bus/platform/devices/pwm-speaker.0/volume";
inline constexpr char okLine[] = "OK: /sys/class/leds/sys:status:rgb/brightness\n";
inline constexpr char displayErrorLine[] = "Error opening display backlight device file!\n";

/// No device of this number exists.
inline constexpr auto unknownDevice = static_cast<ZRDimmableDevice>(7);
inline constexpr auto firstUnknownDevice = static_cast<ZRDimmableDevice>(5);

/// A terminal with all five devices, none with colour but the RGB LED, all at 128.
void makeBoard();

/// The same with colour illuminations.
void makeColorBoard();

/// The report that the library makes, with level and section.
Report report(const std::string& message);

/// The first line of a file with its newline: a file in memory keeps old bytes behind a shorter
/// value, which an attribute does not.
std::string firstLine(const std::string& path);

/// Builds the object and gives what it printed.
std::string outputOfBuilding();

/// Reading with a fresh out value.
struct Reading {
    unsigned int result;
    unsigned int value;
};

inline constexpr unsigned int untouched = 4711;

Reading getIntensity(ZRDimmableDevice device);
Reading getColor(ZRDimmableDevice device);
Reading getMinimum();

bool operator==(const Reading& left, const Reading& right);
std::ostream& operator<<(std::ostream& stream, const Reading& reading);

/// Opens what the class protects. Never built.
struct Inside : ZRDimmable {
    Inside() = delete;

    static AttributeStream& stream(ZRDimmableDevice device);
    static unsigned int minimum() {
        return ZRDimmable::getInstance()->*(&Inside::minDisplayBacklightIntensity);
    }
    static std::string displayPath() {
        return ZRDimmable::getInstance()->*(&Inside::displayBacklightPath);
    }
    static std::string rgbPath() { return ZRDimmable::getInstance()->*(&Inside::rgbLedPath); }
    static unsigned int lastKeyColor() { return ZRDimmable::getInstance()->*(&Inside::keyColor); }
    static unsigned int lastEncoderColor() {
        return ZRDimmable::getInstance()->*(&Inside::encoderColor);
    }
    static std::vector<unsigned int> fullScales();
    static std::mutex* displayLock() { return &displayMutex; }
    static std::mutex* beeperLock() { return &beeperMutex; }
    static std::mutex* ledLock() { return &LEDMutex; }
};

/// While it lives the kernel refuses each write of this process to a file (EFBIG).
class RefusedWrites {
  public:
    RefusedWrites();
    RefusedWrites(const RefusedWrites&) = delete;
    RefusedWrites& operator=(const RefusedWrites&) = delete;
    ~RefusedWrites();
};

/// Collects reports; the object is built on first use, so that a test lays out its board first.
class DimmableTest : public testing::Test {
  protected:
    static ZRDimmable& device() { return *ZRDimmable::getInstance(); }
    std::vector<Report> reports() const { return log_.reports(); }
    void forgetReports() { log_.clear(); }

  private:
    ReportLog log_;
};

using Reports = std::vector<Report>;

}  // namespace ZR::test
