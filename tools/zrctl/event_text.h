#pragma once

#include <string>

#include "common/zrapi_common/zr_event.h"

namespace zrctl {

/// The line of a driver's notification, its newline included: "di1 on".
std::string eventLine(const ZR::ZREvent& event);

/// The same as a JSON document on a line.
std::string eventDocument(const ZR::ZREvent& event);

}  // namespace zrctl
