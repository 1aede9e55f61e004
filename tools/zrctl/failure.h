#pragma once

#include <string>
#include <vector>

#include "tools/zrctl/json.h"

namespace zrctl {

/// What an operation of the library came to.
struct Outcome {
    unsigned int result = 0;  ///< the library's result code
    std::string advice;       ///< what to do; empty on success. Beside result 0: what the library
                              ///< does not test and did not happen
    bool succeeded() const { return result == 0 && advice.empty(); }
};

/// "write failed (result 6)".
std::string describeResult(unsigned int result);

/// The one line about a failed operation on a thing: what failed and what to do.
std::string failureText(const std::string& thing, const Outcome& outcome);

/// Adds "result", "resultText" and, on failure, "error".
void addOutcome(JsonObject& object, const std::string& thing, const Outcome& outcome);

/// True when the attribute is there, whoever may use it.
bool attributeExists(const std::string& path);

/// True when this process may use the attribute as R_OK and W_OK in @p access say.
bool mayUse(const std::string& path, int access);

/// Says that none of the attributes that can be behind a thing is there, and what to do.
std::string adviseOnMissing(const std::vector<std::string>& paths);

/// Says why an attribute of the kernel could not be used and what to do.
/// @param access  R_OK, W_OK or both: what was tried
std::string adviseOnAttribute(const std::string& path, int access);

}  // namespace zrctl
