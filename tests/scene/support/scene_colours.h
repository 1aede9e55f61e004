#pragma once

#include "tests/scene/support/pattern.h"

namespace ZR::test {

/// The empty scene: neither black nor a colour of the test picture.
constexpr PatternColour sceneColour = {100, 100, 100};
/// The wait item of video.qml.
constexpr PatternColour waitItemColour = {180, 30, 200};

}  // namespace ZR::test
