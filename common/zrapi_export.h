#pragma once

/// Marks what a shared library of this project exports; everything else is compiled hidden.
#define ZRAPI_EXPORT __attribute__((visibility("default")))
