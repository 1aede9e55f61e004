#pragma once

#include <string>

namespace ZR::test {

/// What jq makes of a JSON text with a filter, on one line a result; throws when the text is no
/// valid JSON or the filter fails.
std::string query(const std::string& json, const std::string& filter);

}  // namespace ZR::test
