#include "tools/zrctl/arguments.h"

#include <algorithm>
#include <charconv>

namespace zrctl {
namespace {

constexpr std::size_t longestQuote = 60;

bool isOption(const std::string& word) {
    // "-5" is a number that somebody got wrong, not an option.
    return word.size() > 1 && word[0] == '-' && (word[1] < '0' || word[1] > '9');
}

bool contains(const Words& words, const std::string& word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

bool takeCommonOption(const std::string& word, CommonOptions& common) {
    if (word == "--help" || word == "-h")
        common.help = true;
    else if (word == "--version")
        common.version = true;
    else if (word == "--json")
        common.json = true;
    else if (word == "--verbose" || word == "-v")
        common.verbose = true;
    else
        return false;
    return true;
}

}  // namespace

CommonOptions takeCommonOptions(Words& words) {
    CommonOptions common;
    const auto end = std::find(words.begin(), words.end(), "--");
    const auto kept = std::remove_if(words.begin(), end, [&common](const std::string& word) {
        return takeCommonOption(word, common);
    });
    words.erase(kept, end);
    return common;
}

std::optional<std::string> takeName(Words& words) {
    const std::size_t index = !words.empty() && words.front() == "--" ? 1 : 0;
    if (words.size() <= index)
        return std::nullopt;
    const std::string name = words[index];
    words.erase(words.begin() + static_cast<Words::difference_type>(index));
    return name;
}

Arguments::Arguments(const Words& words, const Words& options, const Words& flags) {
    for (auto word = words.begin(); word != words.end(); ++word) {
        if (*word == "--") {
            operands_.insert(operands_.end(), word + 1, words.end());
            return;
        }
        if (!isOption(*word)) {
            operands_.push_back(*word);
            continue;
        }
        const std::size_t equals = word->find('=');
        const std::string name = word->substr(0, equals);
        const bool isFlag = contains(flags, name);
        if (!isFlag && !contains(options, name))
            throw UsageError("unknown option " + quote(name) + "; --help lists them");
        if (isFlag && equals != std::string::npos)
            throw UsageError("option " + name + " takes no value");
        if (isFlag)
            values_[name] = "";
        else if (equals != std::string::npos)
            values_[name] = word->substr(equals + 1);
        else if (word + 1 != words.end())
            values_[name] = *++word;
        else
            throw UsageError("option " + name + " needs a value");
    }
}

std::optional<std::string> Arguments::value(const std::string& option) const {
    const auto found = values_.find(option);
    return found == values_.end() ? std::nullopt : std::optional<std::string>(found->second);
}

std::optional<long long> wholeNumber(const std::string& text, long long lowest, long long highest) {
    long long number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end || number < lowest || number > highest)
        return std::nullopt;
    return number;
}

long long parseNumber(const std::string& text, const std::string& name, long long lowest,
                      long long highest) {
    const auto number = wholeNumber(text, lowest, highest);
    if (!number)
        throw UsageError(name + " " + quote(text) + " is no whole number from " +
                         std::to_string(lowest) + " to " + std::to_string(highest));
    return *number;
}

std::string quote(const std::string& text) {
    constexpr char digits[] = "0123456789abcdef";
    std::string quoted = "'";
    for (const char character : text.substr(0, longestQuote)) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 0x20 && byte < 0x7F)
            quoted += character;
        else
            quoted += {'\\', 'x', digits[byte / 16], digits[byte % 16]};
    }
    return quoted + (text.size() > longestQuote ? "...'" : "'");
}

}  // namespace zrctl
