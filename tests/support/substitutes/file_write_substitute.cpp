#include "tests/support/substitutes/file_write_substitute.h"

#include <cerrno>
#include <stdexcept>
#include <utility>

#include "common/zrapi_utility/zr_file_access.h"

namespace ZR::test {

FileWriteFault FileWriteSubstitute::next = FileWriteFault::None;
std::vector<FileWrite> FileWriteSubstitute::calls;

}  // namespace ZR::test

namespace ZR {

int writeToFile(const std::string& path, int value) {
    test::FileWriteSubstitute::calls.push_back({path, value});
    switch (std::exchange(test::FileWriteSubstitute::next, test::FileWriteFault::None)) {
        case test::FileWriteFault::ThrowStandardException:
            throw std::runtime_error("write");
        case test::FileWriteFault::ThrowOtherException:
            throw value;  // NOLINT(*-throw-by-value*, *-throw-*): no std::exception, on purpose
        case test::FileWriteFault::Fail:
            return EIO;
        case test::FileWriteFault::None:
            break;
    }
    return 0;
}

}  // namespace ZR
