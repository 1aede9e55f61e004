// Sets the colour of the RGB status LED: set_status_led RRGGBB

#include <charconv>
#include <cstring>
#include <iomanip>
#include <iostream>

#include <common/zrapi_common/zr_result.h>
#include <hardware/dimmable/zr_dimmable.h>

int main(int argc, char** argv) {
    constexpr std::size_t digits = 6;
    constexpr int hexadecimal = 16;
    unsigned int color = 0;
    const bool complete = argc == 2 && std::strlen(argv[1]) == digits;
    if (!complete ||
        std::from_chars(argv[1], argv[1] + digits, color, hexadecimal).ptr != argv[1] + digits) {
        std::cerr << "usage: set_status_led RRGGBB (six hexadecimal digits)\n";
        return 2;
    }

    // The object belongs to the library. Building it detaches the key LED from its kernel trigger.
    ZR::ZRDimmable* const dimmable = ZR::ZRDimmable::getInstance();

    unsigned int result = dimmable->setColor(color, ZR::RGBLED);
    if (result != ZR::ResultSuccess) {
        std::cerr << "setColor: " << ZR::resultText(result) << " (" << result << ")\n";
        return 1;
    }

    unsigned int shown = 0;
    result = dimmable->getColor(&shown, ZR::RGBLED);
    if (result != ZR::ResultSuccess) {
        std::cerr << "getColor: " << ZR::resultText(result) << " (" << result << ")\n";
        return 1;
    }
    std::cout << "The status LED shows #" << std::hex << std::setfill('0') << std::setw(digits)
              << shown << '\n';
    return 0;
}
