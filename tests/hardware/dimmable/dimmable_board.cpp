#include "tests/hardware/dimmable/dimmable_board.h"

#include <sys/resource.h>

#include <csignal>
#include <ostream>

#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

/// What the kernel grants at most serves as no limit.
bool setFileSizeLimit(rlim_t limit) {
    struct rlimit limits {};
    if (::getrlimit(RLIMIT_FSIZE, &limits) != 0)
        return false;
    limits.rlim_cur = limit == RLIM_INFINITY ? limits.rlim_max : limit;
    return ::setrlimit(RLIMIT_FSIZE, &limits) == 0;
}

}  // namespace

void makeBoard() {
    for (const char* const path : {platformDisplay, keyFile, encoderFile, rgbFile, beeperFile})
        makeFile(path, "128\n");
    makeFile(keyMaximum, "255\n");
    makeFile(encoderMaximum, "255\n");
    makeFile(keyTrigger, "");
}

void makeColorBoard() {
    makeBoard();
    makeFile(keyMaximum, "16777215\n");
    makeFile(encoderMaximum, "16777215\n");
}

Report report(const std::string& message) {
    return {1, "zr_dimmable", message};
}

std::string firstLine(const std::string& path) {
    const std::string content = readFile(path);
    const std::size_t end = content.find('\n');
    return end == std::string::npos ? content : content.substr(0, end + 1);
}

std::string outputOfBuilding() {
    OutputCapture capture;
    (void)ZRDimmable::getInstance();
    capture.release();
    return capture.output();
}

Reading getIntensity(ZRDimmableDevice device) {
    Reading reading{0, untouched};
    reading.result = ZRDimmable::getInstance()->getIntensity(&reading.value, device);
    return reading;
}

Reading getColor(ZRDimmableDevice device) {
    Reading reading{0, untouched};
    reading.result = ZRDimmable::getInstance()->getColor(&reading.value, device);
    return reading;
}

Reading getMinimum() {
    Reading reading{0, untouched};
    reading.result = ZRDimmable::getInstance()->getMinDisplayBacklightIntensity(&reading.value);
    return reading;
}

bool operator==(const Reading& left, const Reading& right) {
    return left.result == right.result && left.value == right.value;
}

std::ostream& operator<<(std::ostream& stream, const Reading& reading) {
    return stream << "result " << reading.result << ", value " << reading.value;
}

AttributeStream& Inside::stream(ZRDimmableDevice device) {
    ZRDimmable& object = *ZRDimmable::getInstance();
    switch (device) {
        case DisplayBacklight:
            return object.*(&Inside::displayBacklightFile);
        case KeyBacklight:
            return object.*(&Inside::keyBacklightFile);
        case EncoderBacklight:
            return object.*(&Inside::encoderBacklightFile);
        case RGBLED:
            return object.*(&Inside::rgbLedFile);
        default:
            return object.*(&Inside::beeperVolumeFile);
    }
}

std::vector<unsigned int> Inside::fullScales() {
    const ZRDimmable& object = *ZRDimmable::getInstance();
    return {object.*(&Inside::maxDisplayBrightness), object.*(&Inside::maxKeyBrightness),
            object.*(&Inside::maxEncoderBrightness)};
}

RefusedWrites::RefusedWrites() {
    // The kernel would also end the process.
    (void)std::signal(SIGXFSZ, SIG_IGN);
    EXPECT_TRUE(setFileSizeLimit(0));
}

RefusedWrites::~RefusedWrites() {
    EXPECT_TRUE(setFileSizeLimit(RLIM_INFINITY));
}

}  // namespace ZR::test
