#include "common/zrapi_utility/zr_to_string.h"

namespace ZR {

std::string toString(int value) {
    return std::to_string(value);
}

}  // namespace ZR
