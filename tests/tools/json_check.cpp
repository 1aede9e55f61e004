#include "tests/tools/json_check.h"

#include <stdexcept>

#include "tests/support/private_root.h"
#include "tests/tools/tool_process.h"

namespace ZR::test {
namespace {

constexpr char parser[] = "/usr/bin/jq";
constexpr char documentFile[] = "/dev/document.json";

}  // namespace

std::string query(const std::string& json, const std::string& filter) {
    makeFile(documentFile, json);
    const ToolResult result = runTool(parser, {"-c", filter, documentFile});
    if (result.status != 0)
        throw std::runtime_error("jq: " + result.errors + "in: " + json);
    return result.output;
}

}  // namespace ZR::test
