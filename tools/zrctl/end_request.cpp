#include "tools/zrctl/end_request.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <limits>
#include <system_error>

#include "tools/zrctl/output.h"

namespace zrctl {
namespace {

constexpr std::size_t ownDescriptors = 2;

}  // namespace

Deadline::Deadline(std::optional<long long> seconds) {
    if (seconds)
        end_ = std::chrono::steady_clock::now() + std::chrono::seconds(*seconds);
}

int Deadline::left() const {
    using std::chrono::milliseconds;
    if (!end_)
        return -1;
    const auto left =
        std::chrono::ceil<milliseconds>(*end_ - std::chrono::steady_clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, std::numeric_limits<int>::max()));
}

EndRequest::EndRequest() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    (void)sigprocmask(SIG_BLOCK, &signals, nullptr);
    signals_ = ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (signals_ < 0)
        throw std::system_error(errno, std::generic_category(), "cannot wait for signals");
    giveUpPrintingWhenReadable(signals_);
}

EndRequest::~EndRequest() {
    giveUpPrintingWhenReadable(-1);
    ::close(signals_);
}

bool EndRequest::wait(std::vector<pollfd>& watched, int milliseconds) const {
    std::vector<pollfd> all{{signals_, POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
    all.insert(all.end(), watched.begin(), watched.end());
    (void)::poll(all.data(), all.size(), milliseconds);
    std::copy(all.begin() + ownDescriptors, all.end(), watched.begin());
    return all[0].revents != 0 || all[1].revents != 0;
}

bool EndRequest::wait(int milliseconds) const {
    std::vector<pollfd> none;
    return wait(none, milliseconds);
}

}  // namespace zrctl
