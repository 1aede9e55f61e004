#include "tools/zrctl/command.h"

#include "tools/zrctl/output.h"

namespace zrctl {

int show(const Report& report, const CommonOptions& common) {
    if (common.json) {
        JsonObject object = report.json;
        addOutcome(object, report.thing, report.outcome);
        print(object.text() + '\n');
    } else if (!report.text.empty()) {
        print(report.text + '\n');
    }
    if (report.outcome.succeeded())
        return statusSuccess;
    printError(failureText(report.thing, report.outcome));
    return statusFailure;
}

int show(const std::vector<Report>& reports, const std::string& key, const CommonOptions& common) {
    std::vector<JsonObject> objects;
    std::string text;
    for (const Report& report : reports) {
        objects.push_back(report.json);
        addOutcome(objects.back(), report.thing, report.outcome);
        if (!report.text.empty())
            text += report.text + '\n';
    }
    print(common.json ? JsonObject().addList(key, objects).text() + '\n' : text);
    int status = statusSuccess;
    for (const Report& report : reports) {
        if (report.outcome.succeeded() || report.tolerated)
            continue;
        printError(failureText(report.thing, report.outcome));
        status = statusFailure;
    }
    return status;
}

int runAction(const std::string& subcommand, const std::vector<Command>& actions, Words words,
              const CommonOptions& common) {
    const std::string hint = "; 'zrctl " + subcommand + " --help' lists them";
    const auto name = takeName(words);
    if (!name)
        throw UsageError("no action given after " + subcommand + hint);
    for (const Command& action : actions) {
        if (*name == action.name)
            return action.run(words, common);
    }
    throw UsageError("no action " + quote(*name) + " of " + subcommand + hint);
}

}  // namespace zrctl
