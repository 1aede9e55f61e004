#pragma once

#include <map>
#include <string>

/// Takes the place of ZR::readStringFromFile; link `zrapi_substitute_file_read`.
/// Reads nothing anywhere. Logs to CaptureCallLog.

namespace ZR::test {

/// How the next read goes wrong; used up by it.
enum class FileReadFault { None, ThrowStandardException, Fail };

struct FileReadSubstitute {
    /// The text of each file; a missing one cannot be read.
    static std::map<std::string, std::string> files;
    static FileReadFault next;
};

}  // namespace ZR::test
