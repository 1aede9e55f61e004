#include "tools/zrctl/video_play_record.h"

#include <algorithm>

#include "tools/zrctl/command.h"
#include "tools/zrctl/output.h"

namespace zrctl {
namespace {

constexpr std::size_t timeWidth = 9;

const char* stateName(PlayState state) {
    switch (state) {
        case PlayState::Starting:
            return "starting";
        case PlayState::Playing:
            return "playing";
        case PlayState::Waiting:
            return "waiting";
        case PlayState::Restarting:
            return "restarting";
        case PlayState::GaveUp:
            return "gave up";
        case PlayState::None:
            break;
    }
    return "";
}

/// "1.2 s"
std::string seconds(long long milliseconds) {
    const long long tenths = (milliseconds + 50) / 100;
    return std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10) + " s";
}

std::string counted(long long number, const std::string& noun) {
    return std::to_string(number) + ' ' + noun + (number == 1 ? "" : "s");
}

/// What follows @p start in a line that begins with it.
std::optional<std::string> behind(const std::string& line, const std::string& start) {
    if (line.rfind(start, 0) != 0)
        return std::nullopt;
    return line.substr(start.size());
}

void addOptional(JsonObject& json, const char* key, const std::optional<long long>& number) {
    if (number)
        json.addNumber(key, *number);
    else
        json.addNull(key);
}

}  // namespace

void PlayNews::add(const std::string& line) {
    if (const auto time = behind(line, "Trigger stream restart in "))
        restartIn = wholeNumber(time->substr(0, time->find(' ')), 0, 1000000).value_or(0);
    else if (behind(line, "Video: Gave up after "))
        gaveUp = true;
    else if (const auto error = behind(line, "GST Error : "))
        reason = *error;
    else if (behind(line, "STREAM TIMED OUT!"))
        reason = "the sender is silent";
    else if (behind(line, "STREAM TIMEOUT (EOS)!"))
        reason = "the stream has ended";
}

void PlayRecord::leave(long long now) {
    if (state_ == PlayState::Playing)
        shown_ += now - entered_;
    entered_ = now;
}

void PlayRecord::enter(PlayState state, long long now, const std::string& detail) {
    if (state == state_)
        return;
    leave(now);
    state_ = state;
    if (json_) {
        JsonObject json;
        json.addText("state", stateName(state)).addNumber("milliseconds", now);
        if (!detail.empty())
            json.addText("detail", detail);
        print(json.text() + '\n');
        return;
    }
    const std::string time = seconds(now);
    print(std::string(timeWidth - std::min(timeWidth, time.size()), ' ') + time + "  " +
          stateName(state) + (detail.empty() ? "" : ": " + detail) + '\n');
}

std::string PlayRecord::summaryText() const {
    std::string text = pictures_ == 0
                           ? "no picture was shown"
                           : "shown for " + seconds(shown_) + ": " + counted(pictures_, "picture");
    text += ", " + counted(restarts_, "restart");
    if (firstPicture_)
        text += ", first picture after " + seconds(*firstPicture_);
    return text + '\n' + (snapshotWritten_ ? "snapshot " + request_.snapshot + '\n' : "");
}

int PlayRecord::summarize(const std::string& error, long long now) {
    leave(now);
    if (!error.empty())
        printError(error);
    if (!json_) {
        if (state_ != PlayState::None)
            print(summaryText());
        return error.empty() ? statusSuccess : statusFailure;
    }
    JsonObject json;
    json.addText("type", request_.typeName)
        .addNumber("shownMilliseconds", shown_)
        .addNumber("pictures", pictures_)
        .addNumber("restarts", restarts_);
    addOptional(json, "firstPictureMilliseconds", firstPicture_);
    if (snapshotWritten_)
        json.addText("snapshot", request_.snapshot);
    else
        json.addNull("snapshot");
    if (!error.empty())
        json.addText("error", error);
    print(json.text() + '\n');
    return error.empty() ? statusSuccess : statusFailure;
}

}  // namespace zrctl
