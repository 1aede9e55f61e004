#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zrctl {

/// A JSON object on one line, its members in the order in which they were added.
class JsonObject {
  public:
    JsonObject& addText(std::string_view key, std::string_view text);
    JsonObject& addNumber(std::string_view key, long long number);
    JsonObject& addBool(std::string_view key, bool value);
    JsonObject& addNull(std::string_view key);
    JsonObject& addObject(std::string_view key, const JsonObject& object);
    JsonObject& addList(std::string_view key, const std::vector<JsonObject>& objects);

    std::string text() const { return "{" + members_ + "}"; }

  private:
    JsonObject& add(std::string_view key, const std::string& value);

    std::string members_;
};

}  // namespace zrctl
