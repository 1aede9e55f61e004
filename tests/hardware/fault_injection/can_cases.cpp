#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>

#include "hardware/can/can_socket.h"
#include "tests/hardware/fault_injection/fault_case.h"
#include "tests/support/private_root.h"
#include "tests/support/report_log.h"
#include "tests/support/substitutes/can_socket_substitute.h"

namespace ZR::test {
namespace {

constexpr char received[] = "/sys/class/net/can0/statistics/rx_packets";
constexpr char sent[] = "/sys/class/net/can0/statistics/tx_packets";

/// A socket that a case can connect by hand.
struct Connectable : CANSocket {
    using CANSocket::filters;
    using CANSocket::socketDescriptor;
};

/// The end point that the operation works on, made before it.
Connectable* endPoint = nullptr;
int socketsBefore = 0;

int openSockets() {
    int count = 0;
    for (int descriptor = 0; descriptor < 64; ++descriptor) {
        struct stat status {};
        if (::fstat(descriptor, &status) == 0 && S_ISSOCK(status.st_mode))
            ++count;
    }
    return count;
}

void layOut() {
    CanSocketSubstitute::reset();
    CanSocketSubstitute::recording = false;
    CanSocketSubstitute::interfaces = {{"can0", 7}};
    makeFile(received, "12\n");
    makeFile(sent, "34\n");
}

void make() {
    endPoint = new Connectable;
    socketsBefore = openSockets();
}

/// An end point whose first set-up has failed, with what it left open.
void makeAfterFailure() {
    make();
    const ReportLog expected;
    (void)endPoint->initialize(9);
}

/// An end point on one end of a pair, with frames waiting.
void makeConnected() {
    make();
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_DGRAM, 0, ends.data()) != 0)
        throw std::runtime_error("socketpair");
    endPoint->socketDescriptor = ends[0];
    can_frame frame{};
    frame.can_id = 0x123;
    for (int i = 0; i < 2; ++i)
        (void)!::write(ends[1], &frame, sizeof frame);
}

void makeRetrying() {
    makeConnected();
    endPoint->setRetry(1, 0);
}

std::string initialize() {
    return std::to_string(endPoint->initialize(1));
}

/// What the set-up has left: nothing may be lost.
std::string state() {
    return std::to_string(openSockets() - socketsBefore) + " open" +
           (endPoint->isConnected() ? ", connected" : "");
}

/// A call of the set-up that ends it; the next attempt makes up for it.
CallRule ends(const std::string& call, const std::string& outcome) {
    CallRule rule = fails(call, outcome);
    rule.afterwards = "0 | 1 open, connected";
    return rule;
}

std::vector<CallRule> openingCalls() {
    return {ends("socket", "4 | creating sockets | 0 open"),
            hides("fcntl", "the flags are set before anything is checked"),
            ends("ioctl", "4 | ioctl sock | 1 open"),
            ends("bind", "4 | bind sock error:  {reason} | 1 open")};
}

FaultCase initializing() {
    FaultCase each{"can_initialize",        layOut,        make, initialize, state,
                   "0 | 1 open, connected", openingCalls()};
    each.nextOutcome = "3 | interface has been initialized before! | 1 open, connected";
    return each;
}

FaultCase initializingAgain() {
    FaultCase each = initializing();
    each.name = "can_initialize_after_a_failure";
    each.prepare = makeAfterFailure;
    // A close that is not made is the tracer's; the kernel's own always frees the descriptor.
    CallRule close = fails("close", "0 | 2 open, connected");
    close.afterwards = "3 | interface has been initialized before! | 2 open, connected";
    each.calls.insert(each.calls.begin(), close);
    return each;
}

FaultCase counting(const std::string& name, unsigned int (*operation)(unsigned int, int&),
                   const std::string& count) {
    CallRule read = repeats("read", "0 0");
    return {name,
            layOut,
            nullptr,
            [operation] {
                int value = 4711;
                const unsigned int result = operation(1, value);
                return std::to_string(result) + ' ' + std::to_string(value);
            },
            nullptr,
            "0 " + count,
            {fails("openat", "2 4711"), read,
             hides("close", "the count is complete before the file is closed")}};
}

FaultCase receiving() {
    const std::string line = "CANSocket::receive() on port 4294967295: ERROR: read ";
    CallRule read = fails("read", "5 4711 | " + line + "failed: -1, errno: {error} ({reason}).\n");
    read.shortened = "1 4711 | " + line + "only 1 bytes instead of 16.\n";
    read.afterwardsShortened = "0 291";
    return {"can_receive",
            layOut,
            makeConnected,
            [] {
                ZRCANMessage message{0, 4711, 0, {}, 0};
                const unsigned int result = endPoint->receive(&message);
                return std::to_string(result) + ' ' + std::to_string(message.id);
            },
            nullptr,
            "0 291",
            {read}};
}

FaultCase sending(const std::string& name, void (*prepare)(), const CallRule& write) {
    return {name,
            layOut,
            prepare,
            [] {
                ZRCANMessage message{};
                return std::to_string(endPoint->send(&message));
            },
            nullptr,
            "0",
            {write}};
}

FaultCase polling() {
    return {"can_setPolling",
            layOut,
            makeConnected,
            [] { return std::to_string(endPoint->setPolling(true, 1)); },
            nullptr,
            "0",
            {fails("fcntl", "-1")}};
}

FaultCase filtering() {
    return {"can_addIDFilter",
            layOut,
            makeConnected,
            [] {
                const unsigned int result = endPoint->addIDFilter(1, 2);
                return std::to_string(result) + ' ' + std::to_string(endPoint->filters.size());
            },
            nullptr,
            "0 1",
            {hides("setsockopt", "a refused filter is kept and shows nowhere")},
            "0 2"};
}

}  // namespace

std::vector<FaultCase> canCases() {
    return {initializing(),
            initializingAgain(),
            counting("can_getRxPackages", &ZRCANRaw::getRxPackages, "12"),
            counting("can_getTxPackages", &ZRCANRaw::getTxPackages, "34"),
            receiving(),
            sending("can_send", makeConnected, fails("write", "7")),
            sending("can_send_with_a_retry", makeRetrying,
                    hides("write", "the second attempt succeeds")),
            polling(),
            filtering()};
}

}  // namespace ZR::test
