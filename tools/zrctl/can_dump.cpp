#include <cerrno>
#include <chrono>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/zrctl/can_capture.h"
#include "tools/zrctl/can_dump_text.h"
#include "tools/zrctl/can_frame.h"
#include "tools/zrctl/can_port.h"
#include "tools/zrctl/end_request.h"
#include "tools/zrctl/output.h"

namespace zrctl {
namespace {

constexpr std::size_t muchText = 65536;
// The frames of one port must not hold up those of the others for long.
constexpr int framesInTurn = 64;
constexpr std::int64_t endOfTime = std::numeric_limits<std::int64_t>::max();

struct DumpRequest {
    std::vector<CanPort> ports;
    std::optional<CanFilter> filter;
    long long count = std::numeric_limits<long long>::max();
    std::optional<long long> seconds;
};

void addPort(const std::string& word, std::vector<CanPort>& ports) {
    const CanPort port = parseCanPort(word);
    for (const CanPort& known : ports) {
        if (known.number == port.number)
            throw UsageError("can dump takes a port once, and " + port.interface() +
                             " is there twice");
    }
    ports.push_back(port);
}

DumpRequest parseDump(const Words& words) {
    constexpr int highest = std::numeric_limits<int>::max();
    const Arguments arguments(words, {"--filter", "--count", "--time-limit"});
    if (arguments.operands().empty())
        throw UsageError("can dump needs a port; 'zrctl can list' shows them all");
    DumpRequest request;
    for (const std::string& word : arguments.operands())
        addPort(word, request.ports);
    if (const auto filter = arguments.value("--filter"))
        request.filter = parseCanFilter(*filter);
    if (const auto count = arguments.value("--count"))
        request.count = parseNumber(*count, "count", 1, highest);
    if (const auto seconds = arguments.value("--time-limit"))
        request.seconds = parseNumber(*seconds, "time limit", 1, highest);
    return request;
}

std::int64_t now() {
    using std::chrono::microseconds;
    return std::chrono::duration_cast<microseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

/// The frames of some ports, on their way to standard output. One thread waits for the sockets, the
/// signals and the reader together, since a socket of the library is used by one thread at a time.
/// Text is collected while frames wait; what comes while it is written waits in the sockets.
class Dump {
  public:
    Dump(const DumpRequest& request, bool json) : json_(json), left_(request.count) {
        for (const CanPort& port : request.ports)
            sources_.push_back({CanCapture(port)});
    }

    /// @return false when a port failed, which was shown then
    bool open(const std::optional<CanFilter>& filter, const CommonOptions& common);

    /// Shows frames until the end comes.
    void run(const EndRequest& endRequest, const Deadline& deadline);

    /// Tells what came. @return the exit status
    int summarize() const;

  private:
    struct Source {
        CanCapture capture;
        long long frames = 0;
        bool removed = false;
    };

    void takeTurn(Source& source, std::int64_t until);
    void takeRest();
    void take(Source& source, const CapturedFrame& frame);
    void tell(const CanPort& port, const std::string& what);
    void flush();
    bool isOver() const;

    bool json_;
    long long left_;
    std::vector<Source> sources_;
    std::string text_;
};

bool Dump::open(const std::optional<CanFilter>& filter, const CommonOptions& common) {
    std::string names;
    for (Source& source : sources_) {
        Report report;
        report.thing = source.capture.port().interface();
        report.json = canPortJson(source.capture.port());
        report.outcome = source.capture.open(filter);
        if (!report.outcome.succeeded()) {
            (void)show(report, common);
            return false;
        }
        names += (names.empty() ? "" : ", ") + report.thing;
    }
    printError("listening on " + names);
    return true;
}

void Dump::flush() {
    const std::string text = std::exchange(text_, {});
    if (!text.empty())
        print(text);
}

void Dump::tell(const CanPort& port, const std::string& what) {
    if (json_)
        text_ += canPortJson(port).addText("condition", what).text() + '\n';
    flush();
    printError(port.interface() + ": " + what);
}

void Dump::take(Source& source, const CapturedFrame& frame) {
    const CanPort& port = source.capture.port();
    if (isBusCondition(frame)) {
        tell(port, busConditionText(frame));
        return;
    }
    text_ += frameLine(port, frame, json_);
    ++source.frames;
    --left_;
    if (text_.size() >= muchText)
        flush();
}

/// Takes what has come, of a removed interface all, else as much as a turn holds.
void Dump::takeTurn(Source& source, std::int64_t until) {
    CapturedFrame frame{};
    for (int taken = 0; left_ > 0 && (taken < framesInTurn || source.removed); ++taken) {
        const int error = source.capture.take(frame);
        if (error == EAGAIN)
            return;
        if (error != 0) {
            tell(source.capture.port(), portErrorText(error));
            source.removed = source.removed || error != ENETDOWN;
            continue;
        }
        if (frame.time > until)
            return;
        take(source, frame);
    }
}

/// Takes what had come when the end was asked for.
void Dump::takeRest() {
    const std::int64_t until = now();
    for (Source& source : sources_) {
        long long before = 0;
        do {
            before = source.frames;
            takeTurn(source, until);
        } while (source.frames > before);
    }
}

bool Dump::isOver() const {
    for (const Source& source : sources_) {
        if (!source.removed)
            return left_ == 0;
    }
    return true;
}

void Dump::run(const EndRequest& endRequest, const Deadline& deadline) {
    while (!isOver()) {
        std::vector<pollfd> ready;
        for (const Source& source : sources_)
            // poll looks past a negative descriptor.
            ready.push_back({source.removed ? -1 : source.capture.descriptor(), POLLIN, 0});
        const bool end = endRequest.wait(ready, text_.empty() ? deadline.left() : 0);
        if (end || deadline.isOver()) {
            takeRest();
            break;
        }
        bool nothing = true;
        for (std::size_t i = 0; i < ready.size(); ++i) {
            if (ready[i].revents == 0)
                continue;
            nothing = false;
            takeTurn(sources_[i], endOfTime);
        }
        if (nothing)
            flush();
    }
    flush();
}

int Dump::summarize() const {
    int status = statusSuccess;
    std::vector<JsonObject> documents;
    for (const Source& source : sources_) {
        const CanPort& port = source.capture.port();
        const unsigned int lost = source.capture.lost();
        documents.push_back(canPortJson(port)
                                .addNumber("frames", source.frames)
                                .addNumber("lost", lost)
                                .addBool("removed", source.removed));
        printError(port.interface() + ": " + std::to_string(source.frames) +
                   (source.frames == 1 ? " frame, " : " frames, ") +
                   (lost == 0 ? "none" : std::to_string(lost)) + " lost");
        if (lost > 0 || source.removed)
            status = statusFailure;
    }
    if (json_)
        print(JsonObject().addList("ports", documents).text() + '\n');
    return status;
}

}  // namespace

int runCanDump(const Words& words, const CommonOptions& common) {
    const EndRequest endRequest;
    const DumpRequest request = parseDump(words);
    Dump dump(request, common.json);
    if (!dump.open(request.filter, common))
        return statusFailure;
    try {
        dump.run(endRequest, Deadline(request.seconds));
        return dump.summarize();
    } catch (const OutputError& error) {
        // A reader that has seen enough ends a dump as Ctrl-C does.
        if (error.readerLeft())
            return statusSuccess;
        throw;
    }
}

}  // namespace zrctl
