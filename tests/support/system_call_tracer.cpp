#include "tests/support/system_call_tracer.h"

#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <map>
#include <memory>
#include <ostream>
#include <stdexcept>

#include "tests/support/sanitizer_pipes.h"
#include "tests/support/tracee.h"

namespace ZR::test {
namespace {

// Closing a descriptor that cannot exist does nothing and is made by nobody else.
constexpr long beginMarker = -20001;
constexpr long endMarker = -20002;
constexpr std::size_t sharedSize = 65536;
constexpr int callStop = SIGTRAP | 0x80;

const std::map<long, const char*>& callNames() {
    static const std::map<long, const char*> names{
        {SYS_read, "read"},
        {SYS_write, "write"},
        {SYS_openat, "openat"},
        {SYS_close, "close"},
        {SYS_lseek, "lseek"},
        {SYS_fstat, "fstat"},
        {SYS_newfstatat, "newfstatat"},
        {SYS_statx, "statx"},
        {SYS_ioctl, "ioctl"},
        {SYS_fcntl, "fcntl"},
        {SYS_futex, "futex"},
        {SYS_mmap, "mmap"},
        {SYS_munmap, "munmap"},
        {SYS_mprotect, "mprotect"},
        {SYS_brk, "brk"},
        {SYS_getdents64, "getdents64"},
        {SYS_pread64, "pread64"},
        {SYS_pwrite64, "pwrite64"},
        {SYS_writev, "writev"},
        {SYS_readv, "readv"},
        {SYS_ftruncate, "ftruncate"},
        {SYS_faccessat, "faccessat"},
        {SYS_readlinkat, "readlinkat"},
        {SYS_socket, "socket"},
        {SYS_bind, "bind"},
        {SYS_setsockopt, "setsockopt"},
        {SYS_getsockname, "getsockname"},
        {SYS_sendto, "sendto"},
        {SYS_recvfrom, "recvfrom"},
        {SYS_sendmsg, "sendmsg"},
        {SYS_recvmsg, "recvmsg"},
        {SYS_clock_nanosleep, "clock_nanosleep"},
#ifdef SYS_open
        {SYS_open, "open"},
        {SYS_stat, "stat"},
        {SYS_lstat, "lstat"},
        {SYS_access, "access"},
        {SYS_readlink, "readlink"},
        {SYS_poll, "poll"},
#endif
    };
    return names;
}

std::string nameOf(long number) {
    const auto known = callNames().find(number);
    return known != callNames().end() ? known->second : '#' + std::to_string(number);
}

/// Which argument of a call is a path, or -1.
int pathArgument(const std::string& name) {
    for (const char* const first : {"open", "stat", "lstat", "access", "readlink"})
        if (name == first)
            return 0;
    for (const char* const second : {"openat", "newfstatat", "statx", "faccessat", "readlinkat"})
        if (name == second)
            return 1;
    return -1;
}

bool isMarker(const CallEntry& entry, long marker) {
    return entry.number == SYS_close && static_cast<int>(entry.arguments[0]) == marker;
}

/// The tracing side of one run.
class Tracer {
  public:
    Tracer(pid_t process, const FaultPlan& plan) : process_(process), plan_(plan) {}

    /// Follows the process to its end.
    void run(Trace& trace);

  private:
    void enter(Trace& trace);
    void leave(Trace& trace);
    void choose(const Trace& trace);
    void apply(int error, std::size_t count);

    pid_t process_;
    const FaultPlan& plan_;
    bool recording_ = false;
    bool inside_ = false;
    bool pending_ = false;
    bool sanitizers_ = false;
    int error_ = 0;
    SystemCall call_;
    SanitizerPipes pipes_;
    std::map<long, std::size_t> seen_;
};

void Tracer::run(Trace& trace) {
    int signal = 0;
    for (;;) {
        if (::ptrace(PTRACE_SYSCALL, process_, nullptr, signal) != 0 && errno != ESRCH)
            throw std::runtime_error(std::string("PTRACE_SYSCALL: ") + std::strerror(errno));
        while (::waitpid(process_, &trace.status, 0) < 0 && errno == EINTR) {
        }
        if (!WIFSTOPPED(trace.status))
            return;
        signal = 0;
        if (WSTOPSIG(trace.status) != callStop)
            signal = WSTOPSIG(trace.status);
        else if (!inside_)
            enter(trace);
        else
            leave(trace);
    }
}

void Tracer::enter(Trace& trace) {
    inside_ = true;
    const CallEntry entry = callAtEntry(process_);
    if (isMarker(entry, endMarker))
        recording_ = false;
    sanitizers_ = recording_ && pipes_.enter(entry);
    if (recording_ && !sanitizers_) {
        pending_ = true;
        error_ = 0;
        call_ = {entry.number, nameOf(entry.number), entry.arguments, {}, 0, 0, false};
        const int path = pathArgument(call_.name);
        if (path >= 0)
            call_.text = readText(process_, entry.arguments[static_cast<std::size_t>(path)]);
        if (call_.name == "write")
            call_.text = readMemory(process_, entry.arguments[1], entry.arguments[2]);
        ++seen_[entry.number];
        choose(trace);
    }
    if (isMarker(entry, beginMarker))
        recording_ = true;
}

void Tracer::choose(const Trace& trace) {
    for (const Fault& fault : plan_.faults)
        if (fault.index == trace.calls.size())
            apply(fault.error, fault.count);
    for (const NumberedFault& fault : plan_.numbered)
        if (fault.number == call_.number && fault.occurrence == seen_[call_.number])
            apply(fault.error, fault.count);
}

void Tracer::apply(int error, std::size_t count) {
    call_.injected = true;
    error_ = error;
    if (error != 0)
        cancelCall(process_);
    else
        setCount(process_, std::min<std::uint64_t>(count, call_.arguments[2]));
}

void Tracer::leave(Trace& trace) {
    inside_ = false;
    if (sanitizers_)
        pipes_.leave(process_, resultAtExit(process_));
    if (!pending_)
        return;
    pending_ = false;
    if (error_ != 0)
        setResult(process_, -error_);
    const std::int64_t result = error_ != 0 ? -error_ : resultAtExit(process_);
    const bool failed = result < 0 && result >= -4095;
    call_.result = failed ? -1 : static_cast<long>(result);
    call_.error = failed ? static_cast<int>(-result) : 0;
    if (call_.name == "read" && result > 0)
        call_.text = readMemory(process_, call_.arguments[1], static_cast<std::size_t>(result));
    trace.calls.push_back(call_);
}

/// Memory that parent and child share.
std::shared_ptr<char> makeSharedText() {
    void* const memory =
        ::mmap(nullptr, sharedSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::runtime_error("mmap");
    return {static_cast<char*>(memory), [](char* text) { ::munmap(text, sharedSize); }};
}

// The child's exit statuses; any other says that the function itself ended the process.
constexpr int finished = 0;
constexpr int notTraceable = 98;
constexpr int threw = 97;

[[noreturn]] void runChild(const std::function<void(TracedRun&)>& function, char* text) {
    if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
        ::_exit(notTraceable);
    (void)::raise(SIGSTOP);
    TracedRun run(text, sharedSize);
    try {
        function(run);
    } catch (const std::exception& error) {
        run.end();
        run.say(std::string("exception: ") + error.what());
        ::_exit(threw);
    }
    run.end();
    ::_exit(finished);
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const SystemCall& call) {
    stream << call.name << "(\"" << call.text << "\") = " << call.result;
    if (call.error != 0)
        stream << ' ' << std::strerror(call.error);
    return stream << (call.injected ? " [injected]" : "");
}

std::size_t Trace::count(const std::string& name) const {
    return static_cast<std::size_t>(std::count_if(
        calls.begin(), calls.end(), [&name](const SystemCall& call) { return call.name == name; }));
}

std::string Trace::names() const {
    std::string list;
    for (const SystemCall& call : calls)
        list += (list.empty() ? "" : " ") + call.name;
    return list;
}

void TracedRun::begin() const {
    (void)::syscall(SYS_close, beginMarker);
}

void TracedRun::end() const {
    (void)::syscall(SYS_close, endMarker);
}

void TracedRun::say(const std::string& text) {
    constexpr std::size_t most = 60000;
    const std::size_t length = std::min(text.size(), std::min(size_, most) - used_);
    std::memcpy(text_ + used_, text.data(), length);
    used_ += length;
}

std::string whyNotTraceable() {
#ifdef __SANITIZE_THREAD__
    // Seen to spin for ever in sched_yield: its own thread in the child is not the one traced.
    return "the thread sanitizer can block in a traced child";
#endif
    if (!knowsRegisters())
        return "the tracer does not know this machine's registers";
    static const std::string reason = [] {
        try {
            const Trace trace = traceSystemCalls([](TracedRun& run) {
                run.begin();
                (void)::getppid();
                run.end();
            });
            return std::string(trace.calls.size() == 1 ? "" : "system calls are not seen");
        } catch (const std::runtime_error& error) {
            return std::string(error.what());
        }
    }();
    return reason;
}

Trace traceSystemCalls(const std::function<void(TracedRun&)>& function, const FaultPlan& plan) {
    const std::shared_ptr<char> text = makeSharedText();
    const pid_t child = ::fork();
    if (child < 0)
        throw std::runtime_error("fork");
    if (child == 0)
        runChild(function, text.get());
    Trace trace;
    while (::waitpid(child, &trace.status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFSTOPPED(trace.status))
        throw std::runtime_error("ptrace is refused");
    constexpr long options = PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL;
    if (::ptrace(PTRACE_SETOPTIONS, child, nullptr, options) != 0)
        throw std::runtime_error(std::string("PTRACE_SETOPTIONS: ") + std::strerror(errno));
    Tracer(child, plan).run(trace);
    trace.text = text.get();
    trace.died = !WIFEXITED(trace.status) || WEXITSTATUS(trace.status) != finished;
    return trace;
}

}  // namespace ZR::test
