#pragma once

#include <string>
#include <vector>

/// Takes the place of ZR::ZRCAN::create; link `zrapi_substitute_controller`.

namespace ZR::test {

struct ControllerSubstitute {
    static bool exists;          ///< whether there is a controller, at first true
    static unsigned int result;  ///< what setBaudrate answers, at first 0
    static bool throws;          ///< setBaudrate raises std::runtime_error instead

    /// "create 0", "setBaudrate 3 250000" and "destroy", in their order.
    static std::vector<std::string> calls;

    /// As it is at first.
    static void reset();
};

}  // namespace ZR::test
