#pragma once

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace zrctl {

/// The command line is wrong; the text says in one line what to do instead.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

using Words = std::vector<std::string>;

/// What every subcommand understands.
struct CommonOptions {
    bool help = false;
    bool version = false;
    bool json = false;
    bool verbose = false;
};

/// Takes the common options out of @p words, wherever they stand before a "--".
CommonOptions takeCommonOptions(Words& words);

/// Takes the name of a subcommand or an action from the start of @p words; nothing when there is
/// none. A "--" before it stays there, because it holds for the words behind the name too.
std::optional<std::string> takeName(Words& words);

/// The words of one subcommand, split into values of options, flags and operands. Options are
/// written "--name value" or "--name=value", flags "--name"; all words after "--" are operands.
class Arguments {
  public:
    /// @param options  names of the options that the subcommand has, each with a value
    /// @param flags    names of the options without one
    /// @throws UsageError for an option that is not among them, lacks its value or has one too many
    Arguments(const Words& words, const Words& options, const Words& flags = {});

    const Words& operands() const { return operands_; }
    std::optional<std::string> value(const std::string& option) const;
    bool has(const std::string& flag) const { return values_.count(flag) != 0; }

  private:
    std::map<std::string, std::string> values_;  ///< a flag that is there has an empty one
    Words operands_;
};

/// Reads a whole decimal number: digits behind an optional minus. Nothing for any other text and
/// for a number out of the range.
std::optional<long long> wholeNumber(const std::string& text, long long lowest, long long highest);

/// Reads a whole decimal number that must be one.
///
/// @param name  what the number is, for the error text
/// @throws UsageError with the range, for a text that is no number in it
long long parseNumber(const std::string& text, const std::string& name, long long lowest,
                      long long highest);

/// Text that a user gave, in quotes, on one line, in printable ASCII whatever it holds.
std::string quote(const std::string& text);

}  // namespace zrctl
