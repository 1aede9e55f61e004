#include "tools/zrctl/failure.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "common/zrapi_common/zr_result.h"

namespace zrctl {
namespace {

/// @return 0, or why the process may not use the file
int accessError(const std::string& path, int access) {
    return ::faccessat(AT_FDCWD, path.c_str(), access, AT_EACCESS) == 0 ? 0 : errno;
}

bool isMissing(int error) {
    return error == ENOENT || error == ENOTDIR || error == ENODEV || error == ENXIO;
}

}  // namespace

std::string describeResult(unsigned int result) {
    return std::string(ZR::resultText(result)) + " (result " + std::to_string(result) + ")";
}

std::string failureText(const std::string& thing, const Outcome& outcome) {
    if (outcome.result == ZR::ResultSuccess)
        return thing + ": the library says " + describeResult(outcome.result) + ", but " +
               outcome.advice;
    return thing + ": " + describeResult(outcome.result) + ": " + outcome.advice;
}

void addOutcome(JsonObject& object, const std::string& thing, const Outcome& outcome) {
    object.addNumber("result", outcome.result);
    object.addText("resultText", ZR::resultText(outcome.result));
    if (!outcome.succeeded())
        object.addText("error", failureText(thing, outcome));
}

bool mayUse(const std::string& path, int access) {
    return accessError(path, access) == 0;
}

bool attributeExists(const std::string& path) {
    return !isMissing(accessError(path, F_OK));
}

std::string adviseOnMissing(const std::vector<std::string>& paths) {
    std::string names;
    for (const std::string& path : paths)
        names += (names.empty() ? "" : " and ") + path;
    return names + (paths.size() > 1 ? " are" : " is") +
           " missing; check that the board has this device and its driver is loaded";
}

std::string adviseOnAttribute(const std::string& path, int access) {
    const int error = accessError(path, access);
    if (isMissing(error))
        return adviseOnMissing({path});
    if (error != 0)
        return "no permission for " + path + "; run zrctl as root or ask for access to that file";
    return "the driver behind " + path + " refused or gave no usable value; see the kernel log";
}

}  // namespace zrctl
