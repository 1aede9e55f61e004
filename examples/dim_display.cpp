// Dims the display: dim_display PERCENT

#include <charconv>
#include <cstring>
#include <iostream>

#include <common/zrapi_common/zr_result.h>
#include <hardware/dimmable/zr_dimmable.h>

int main(int argc, char** argv) {
    unsigned int percent = 0;
    const char* const end = argc == 2 ? argv[1] + std::strlen(argv[1]) : nullptr;
    if (end == nullptr || std::from_chars(argv[1], end, percent).ptr != end || end == argv[1]) {
        std::cerr << "usage: dim_display PERCENT\n";
        return 2;
    }

    // The object belongs to the library. Building it detaches the key LED from its kernel trigger.
    ZR::ZRDimmable* const dimmable = ZR::ZRDimmable::getInstance();

    unsigned int result = dimmable->setIntensity(percent, ZR::DisplayBacklight);
    if (result != ZR::ResultSuccess) {
        std::cerr << "setIntensity: " << ZR::resultText(result) << " (" << result << ")\n";
        return 1;
    }

    unsigned int intensity = 0;
    result = dimmable->getIntensity(&intensity, ZR::DisplayBacklight);
    if (result != ZR::ResultSuccess) {
        std::cerr << "getIntensity: " << ZR::resultText(result) << " (" << result << ")\n";
        return 1;
    }
    std::cout << "The display is at " << intensity << " %\n";
    return 0;
}
