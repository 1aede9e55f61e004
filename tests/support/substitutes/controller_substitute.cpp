#include "tests/support/substitutes/controller_substitute.h"

#include <memory>
#include <stdexcept>

#include "hardware/can/zr_can.h"

namespace ZR::test {

bool ControllerSubstitute::exists = true;
unsigned int ControllerSubstitute::result = 0;
bool ControllerSubstitute::throws = false;
std::vector<std::string> ControllerSubstitute::calls;

namespace {

class Controller : public ZRCAN {
  public:
    ~Controller() override { ControllerSubstitute::calls.emplace_back("destroy"); }

    unsigned int setBaudrate(unsigned int port, unsigned int bitrate) override {
        ControllerSubstitute::calls.push_back("setBaudrate " + std::to_string(port) + ' ' +
                                              std::to_string(bitrate));
        if (ControllerSubstitute::throws)
            throw std::runtime_error("controller");
        return ControllerSubstitute::result;
    }

    unsigned int getBaudrate(unsigned int /*port*/) const override { return 0; }
};

}  // namespace

void ControllerSubstitute::reset() {
    exists = true;
    result = 0;
    throws = false;
    calls.clear();
}

}  // namespace ZR::test

namespace ZR {

std::unique_ptr<ZRCAN> ZRCAN::create(int reserved) {
    test::ControllerSubstitute::calls.push_back("create " + std::to_string(reserved));
    if (!test::ControllerSubstitute::exists)
        return nullptr;
    return std::make_unique<test::Controller>();
}

}  // namespace ZR
