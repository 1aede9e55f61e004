#pragma once

#include <string>
#include <vector>

#include "common/zrapi_common/zr_debug.h"

namespace ZR::test {

/// Sets a knob of the simulated board, by its path below the module's debugfs folder.
void turn(const std::string& knob, const std::string& text);

/// What `cat` prints of a file, without the newline at its end; "(cat failed)" when it fails.
std::string seenByCat(const std::string& path);

/// Runs a command of the shell, which must succeed.
void run(const std::string& command);

/// What a command of the shell prints, without the newline at its end.
std::string saidBy(const std::string& command);

/// Empties the board's log.
void clearLog();

/// The lines of the board's log without their numbers, oldest first.
std::vector<std::string> logLines();

/// Collects the library's fault reports, as "section: message", for the rest of the process.
const std::vector<std::string>& collectReports();

}  // namespace ZR::test
