#include "tests/support/substitutes/file_read_substitute.h"

#include <cerrno>
#include <stdexcept>
#include <utility>

#include "common/zrapi_utility/zr_file_access.h"
#include "tests/support/substitutes/capture_call_log.h"

namespace ZR::test {

std::map<std::string, std::string> FileReadSubstitute::files;
FileReadFault FileReadSubstitute::next = FileReadFault::None;

}  // namespace ZR::test

namespace ZR {

int readStringFromFile(const std::string& path, std::string* text) {
    test::CaptureCallLog::add([&path] { return "readStringFromFile " + path; });
    const test::FileReadFault fault =
        std::exchange(test::FileReadSubstitute::next, test::FileReadFault::None);
    if (fault == test::FileReadFault::ThrowStandardException)
        throw std::runtime_error("read");
    const auto found = test::FileReadSubstitute::files.find(path);
    if (found != test::FileReadSubstitute::files.end())
        *text = found->second;
    if (fault == test::FileReadFault::Fail)
        return EIO;
    return found != test::FileReadSubstitute::files.end() ? 0 : ENOENT;
}

}  // namespace ZR
