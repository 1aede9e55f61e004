#include "tests/scene/faults/watched_input.h"

namespace ZR::test {

WatchedInput::WatchedInput(const std::string& key) : ZRGstreamerVideoInput(key) {
    connect(
        this, &ZRGstreamerVideoInput::errorDetected, this, [this] { ++failures_; },
        Qt::DirectConnection);
}

}  // namespace ZR::test
