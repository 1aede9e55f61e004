#pragma once

#include <string>
#include <vector>

/// Takes the place of ZR::writeToFile; link `zrapi_substitute_file_write`.
/// Writes nothing anywhere: it logs, and answers what it is told to.

namespace ZR::test {

struct FileWrite {
    std::string path;
    int value;
};

/// How the next write goes wrong; each is used up by one write.
enum class FileWriteFault { None, ThrowStandardException, ThrowOtherException, Fail };

struct FileWriteSubstitute {
    static FileWriteFault next;
    static std::vector<FileWrite> calls;
};

}  // namespace ZR::test
