#include <string>
#include <vector>

#include "common/zrapi_utility/zr_file_access.h"
#include "common/zrapi_utility/zr_files_and_folders.h"
#include "tests/hardware/fault_injection/fault_case.h"
#include "tests/support/private_root.h"

namespace ZR::test {
namespace {

constexpr char valueFile[] = "/sys/class/analog/value";
constexpr char folder[] = "/sys/class/regulator";

void makeValue() {
    makeFile(valueFile, "1234\n");
}

void makeRegulators() {
    removeFile(folder);
    makeFile("/sys/devices/one/name", "");
    makeFolder("/sys/class/regulator/plain");
    makeLink("/sys/class/regulator/linked", "/sys/devices/one");
}

std::string readInteger() {
    int value = -1;
    const int status = readIntegerFromFile(valueFile, &value);
    return std::to_string(status) + ' ' + std::to_string(value);
}

std::string readString() {
    std::string text = "untouched";
    const int status = readStringFromFile(valueFile, &text);
    return std::to_string(status) + ' ' + text;
}

std::string listFolders() {
    std::vector<std::string> entries{"old"};
    const int status =
        ZRFilesAndFolders::getAllFilesOrFoldersInFolder(folder, entries, 0, FilterFolders);
    std::string text = std::to_string(status);
    for (const std::string& entry : entries)
        text += ' ' + entry;
    return text;
}

CallRule closeAfterReading() {
    return hides("close", "what was read is complete before the file is closed");
}

/// The data may be lost when a close fails, but not when it was only interrupted.
CallRule closeAfterWriting() {
    return repeats("close", "{error}");
}

}  // namespace

std::vector<FaultCase> fileServiceCases() {
    return {{"readIntegerFromFile",
             makeValue,
             nullptr,
             readInteger,
             nullptr,
             "0 1234",
             {repeats("openat", "{error} -1"), repeats("read", "{error} -1"), closeAfterReading()}},
            {"readStringFromFile",
             makeValue,
             nullptr,
             readString,
             nullptr,
             "0 1234",
             {repeats("openat", "{error} untouched"), repeats("read", "{error} untouched"),
              closeAfterReading()}},
            {"writeToFile",
             makeValue,
             nullptr,
             [] { return std::to_string(writeToFile(valueFile, 77)); },
             nullptr,
             "0",
             {repeats("openat", "{error}"), repeats("write", "{error}"), closeAfterWriting()}},
            {"isFile",
             makeValue,
             nullptr,
             [] { return std::string(ZRFilesAndFolders::isFile(valueFile) ? "true" : "false"); },
             nullptr,
             "true",
             {fails("stat", "false")}},
            {"getAllFilesOrFoldersInFolder",
             makeRegulators,
             nullptr,
             listFolders,
             nullptr,
             "0 linked plain",
             {repeats("openat", "{error}"), repeats("fstat", "{error}"), lists("{error}", "0"),
              // An entry that cannot be examined is no folder.
              fails("stat", "0 plain"), lists("{error}", good),
              hides("close", "the list is complete before the folder is closed")}}};
}

}  // namespace ZR::test
