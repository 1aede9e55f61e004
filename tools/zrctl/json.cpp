#include "tools/zrctl/json.h"

namespace zrctl {
namespace {

/// All texts of the tool are ASCII; a byte that is not would make the document invalid.
std::string jsonString(std::string_view text) {
    std::string result = "\"";
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte >= 0x7F)
            result += '?';
        else if (character == '"' || character == '\\')
            result += {'\\', character};
        else
            result += character;
    }
    return result + '"';
}

}  // namespace

JsonObject& JsonObject::add(std::string_view key, const std::string& value) {
    if (!members_.empty())
        members_ += ", ";
    members_ += jsonString(key) + ": " + value;
    return *this;
}

JsonObject& JsonObject::addText(std::string_view key, std::string_view text) {
    return add(key, jsonString(text));
}

JsonObject& JsonObject::addNumber(std::string_view key, long long number) {
    return add(key, std::to_string(number));
}

JsonObject& JsonObject::addBool(std::string_view key, bool value) {
    return add(key, value ? "true" : "false");
}

JsonObject& JsonObject::addNull(std::string_view key) {
    return add(key, "null");
}

JsonObject& JsonObject::addObject(std::string_view key, const JsonObject& object) {
    return add(key, object.text());
}

JsonObject& JsonObject::addList(std::string_view key, const std::vector<JsonObject>& objects) {
    std::string list;
    for (const JsonObject& object : objects)
        list += (list.empty() ? "" : ", ") + object.text();
    return add(key, "[" + list + "]");
}

}  // namespace zrctl
