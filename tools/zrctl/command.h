#pragma once

#include <string>
#include <vector>

#include "tools/zrctl/arguments.h"
#include "tools/zrctl/failure.h"
#include "tools/zrctl/json.h"

namespace zrctl {

/// Exit statuses of the tool.
constexpr int statusSuccess = 0;
constexpr int statusFailure = 1;
constexpr int statusUsage = 2;

/// What an operation came to, ready to be shown in either form.
struct Report {
    std::string thing;  ///< channel or device, for the error line
    std::string text;   ///< line for people without its newline; empty when there is nothing to say
    JsonObject json;    ///< the same for scripts, without the outcome
    Outcome outcome;
    bool tolerated = false;  ///< a failure is information here: no error line, no bad status
};

/// Shows one report: a line, or an object. A failure also gives its line on standard error.
/// @return the exit status
int show(const Report& report, const CommonOptions& common);

/// Shows several reports: a line each, or one object that holds them all under @p key.
int show(const std::vector<Report>& reports, const std::string& key, const CommonOptions& common);

/// One subcommand or one action of a subcommand.
struct Command {
    const char* name;
    int (*run)(const Words& words, const CommonOptions& common);
};

/// Runs the action that the first of @p words names.
/// @param subcommand  the name before it
/// @throws UsageError when it names none
int runAction(const std::string& subcommand, const std::vector<Command>& actions, Words words,
              const CommonOptions& common);

/// @name Subcommands, a source each
/// @{
extern const char* const featuresHelp;
int runFeatures(const Words& words, const CommonOptions& common);
extern const char* const ioHelp;
int runIo(const Words& words, const CommonOptions& common);
extern const char* const dimmableHelp;
int runDimmable(const Words& words, const CommonOptions& common);
extern const char* const canHelp;
int runCan(const Words& words, const CommonOptions& common);
extern const char* const eventsHelp;
int runEvents(const Words& words, const CommonOptions& common);
extern const char* const videoHelp;
int runVideo(const Words& words, const CommonOptions& common);
/// @}

}  // namespace zrctl
