#pragma once

#include <string>

namespace ZR::benchmarks {

/// Uses the attributes of the drivers where there are any, else lays files of the same names and
/// contents in a private mount namespace. Must be called before any thread is started.
///
/// @param board  receives in words which of the two it is, or why neither is possible
/// @return false when there is nothing to measure on
bool prepareBoard(char* const* arguments, std::string& board);

}  // namespace ZR::benchmarks
