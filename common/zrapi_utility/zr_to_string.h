#pragma once

#include <string>

#include "common/zrapi_export.h"

namespace ZR {

/// Returns @p value as decimal text, with a leading minus sign when it is negative.
/// Independent of the process's locale; callable from any thread.
ZRAPI_EXPORT std::string toString(int value);

}  // namespace ZR
