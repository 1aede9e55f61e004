#include <fcntl.h>

#include <string>

#include "benchmarks/comparison.h"
#include "benchmarks/kernel_floor.h"
#include "benchmarks/operations.h"
#include "hardware/dimmable/zr_dimmable.h"

namespace ZR::benchmarks {
namespace {

constexpr char keyBrightness[] = "/sys/class/leds/bl:key/brightness";

/// Tells what the library has chosen: it knows the display and the RGB LED by several names.
class ChosenPaths : public ZRDimmable {
  public:
    static const std::string& display() {
        return ZRDimmable::getInstance()->*(&ChosenPaths::displayBacklightPath);
    }
    static const std::string& rgbLed() {
        return ZRDimmable::getInstance()->*(&ChosenPaths::rgbLedPath);
    }
};

/// A descriptor that stays open like the library's own; one a device, closed by the process's end.
int keepOpen(const std::string& path) {
    return ::open(path.c_str(), O_RDWR | O_CLOEXEC);
}

void compareIntensity(const std::string& name, ZRDimmableDevice device, const std::string& path) {
    constexpr unsigned int percent = 50;
    ZRDimmable* const devices = ZRDimmable::getInstance();
    const int descriptor = keepOpen(path);
    compare(
        "setIntensity/" + name, [descriptor] { return rewindAndWrite(descriptor, "128\n"); },
        [devices, device] { return devices->setIntensity(percent, device) == 0; });
    compare(
        "getIntensity/" + name, [descriptor] { return rewindAndRead(descriptor); },
        [devices, device] {
            unsigned int intensity = 0;
            return devices->getIntensity(&intensity, device) == 0 && intensity == percent;
        });
}

void compareColor() {
    constexpr unsigned int color = 0x345678;
    ZRDimmable* const devices = ZRDimmable::getInstance();
    const int descriptor = keepOpen(ChosenPaths::rgbLed());
    compare(
        "setColor", [descriptor] { return rewindAndWrite(descriptor, "3430008\n"); },
        [devices] { return devices->setColor(color, RGBLED) == 0; });
    compare(
        "getColor", [descriptor] { return rewindAndRead(descriptor); },
        [devices] {
            unsigned int read = 0;
            return devices->getColor(&read, RGBLED) == 0 && read == color;
        });
}

}  // namespace

void compareDimmableDevices() {
    compareIntensity("display", DisplayBacklight, ChosenPaths::display());
    compareIntensity("key", KeyBacklight, keyBrightness);
    compareColor();
}

}  // namespace ZR::benchmarks
