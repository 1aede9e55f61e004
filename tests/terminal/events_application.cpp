#include "events_application.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <thread>
#include <utility>

#include "board.h"
#include "hardware/netlink/zr_netlink.h"
#include "tests/hardware/netlink/dispatcher.h"
#include "tests/support/output_capture.h"

namespace ZR::test {
namespace {

constexpr char knobs[] = "/sys/kernel/debug/zr_terminal/";

struct Speaker {
    const char* family;
    const char* knob;
    std::uint32_t code;
};

// The channels that tests leave to sentinels.
constexpr Speaker speakers[] = {
    {inputs, "zr_di.3/state/value", 3},
    {outputs, "zr_do.2/state/value", 18},
    {analog, "frequency/value/value", 256},
};

/// A number that no earlier sentinel of this boot had: numbers of processes are not used twice.
std::uint32_t unusedNumber() {
    constexpr std::uint32_t sentinelsPerProcess = 10000;
    static std::uint32_t count = 0;
    return static_cast<std::uint32_t>(::getpid()) * sentinelsPerProcess + ++count;
}

int openForWriting(const std::string& knob) {
    const int file = ::open((knobs + knob).c_str(), O_WRONLY | O_CLOEXEC);
    EXPECT_GE(file, 0) << "knob " << knob;
    return file;
}

double processorSeconds() {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace

bool operator==(const Told& left, const Told& right) {
    return left.value1 == right.value1 && left.value2 == right.value2;
}

std::ostream& operator<<(std::ostream& stream, const Told& told) {
    return stream << "event(" << told.value1 << ", " << told.value2 << ")";
}

Told toldBy(const ZREvent& event) {
    EXPECT_EQ(6, event.kind);
    EXPECT_EQ(900, event.code);
    EXPECT_EQ(0, event.reserved1);
    EXPECT_EQ(0.0, event.reserved2);
    EXPECT_EQ(0.0, event.reserved3);
    EXPECT_EQ("", event.name);
    return {event.value1, event.value2};
}

Application::Application(std::vector<std::string> families)
    : families_(std::move(families)), manager_(std::in_place) {
    ZRNetlink* const dispatcher = ZRNetlink::instance();
    dispatcher->setEndPointManager(&*manager_);
    dispatcher->addEventQueue(&queue);
    for (const std::string& family : families_)
        EXPECT_EQ(0U, dispatcher->addFamily(family)) << family;
    dispatcher->addAllEndpointsToEndpointManager();
}

Application::~Application() {
    manager_.reset();
    ZRNetlink::instance()->setEndPointManager(nullptr);
    ZRNetlink::instance()->addEventQueue(nullptr);
}

Told Application::next() {
    ZREvent event;
    EXPECT_TRUE(queue.waitForEvent(event, longest)) << "no event came";
    return toldBy(event);
}

Tale Application::heardFrom(const std::string& family) {
    return heardUpTo({sentinel(family)});
}

Tale Application::heard() {
    Tale awaited;
    for (const std::string& family : families_)
        awaited.push_back(sentinel(family));
    return heardUpTo(awaited);
}

Tale Application::heardUpTo(Tale awaited) {
    Tale tale;
    while (!awaited.empty() && !testing::Test::HasFatalFailure()) {
        ZREvent event;
        if (!queue.waitForEvent(event, longest)) {
            ADD_FAILURE() << awaited.front() << " never came";
            break;
        }
        const Told told = toldBy(event);
        const auto found = std::find(awaited.begin(), awaited.end(), told);
        if (found != awaited.end())
            awaited.erase(found);
        else
            tale.push_back(told);
    }
    return tale;
}

std::string printedByAdding(const std::string& family) {
    const OutputCapture capture;
    errno = 0;
    EXPECT_EQ(0U, ZRNetlink::instance()->addFamily(family)) << family;
    return capture.output();
}

std::string connectionFailureOf(const std::string& family) {
    return "Retrieving family and multicast ID from driver failed with error 0 (Success)\n"
           "Connecting to generic netlink event interface " +
           family + " failed, disabling event handling\n";
}

Told sentinel(const std::string& family) {
    const auto* const speaker =
        std::find_if(std::begin(speakers), std::end(speakers),
                     [&](const Speaker& candidate) { return candidate.family == family; });
    if (speaker == std::end(speakers)) {
        ADD_FAILURE() << "nothing speaks for " << family;
        return {};
    }
    const std::uint32_t number = unusedNumber();
    turn(speaker->knob, std::to_string(number));
    return {speaker->code, number};
}

void give(const std::string& knob, std::string_view bytes) {
    const int file = openForWriting(knob);
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()), ::write(file, bytes.data(), bytes.size()))
        << knob;
    ::close(file);
}

OpenKnob::OpenKnob(const std::string& knob) : file_(openForWriting(knob)) {}

OpenKnob::~OpenKnob() {
    ::close(file_);
}

void OpenKnob::turn(const std::string& text) const {
    // Not pwrite: knobs that list words when they are read do not take it.
    EXPECT_EQ(0, ::lseek(file_, 0, SEEK_SET));
    EXPECT_EQ(static_cast<ssize_t>(text.size()), ::write(file_, text.data(), text.size()));
}

void EventsBoard::SetUp() {
    for (const char* family : {inputs, outputs, analog}) {
        turn(std::string("notify/") + family + "/registered", "1");
        turn(std::string("notify/") + family + "/muted", "0");
    }
    turn("notify/ZR_QUIET/registered", "0");
    turn("notify/logged", "0");
    for (const char* state : {"zr_di.0", "zr_di.1", "zr_di.2", "zr_do.0", "zr_do.1", "zr_do.2"})
        turn(std::string(state) + "/state/value", "0");
    for (const char* channel :
         {"ai.0", "ai.1", "ai.2", "ai.3", "supply_vcc", "board_12v_bat", "light", "temperature"})
        turn(std::string(channel) + "/value/value", "1");
}

SocketState seenByKernel(int socket) {
    struct stat status {};
    EXPECT_EQ(0, ::fstat(socket, &status));
    std::ifstream table("/proc/net/netlink");
    SocketState state;
    for (std::string line; std::getline(table, line);) {
        SocketState other;
        unsigned long inode = 0;
        const int found = std::sscanf(line.c_str(), "%*s %*s %*s %x %d %*s %*s %*s %d %lu",
                                      &other.groups, &other.unread, &other.lost, &inode);
        if (found == 4 && inode == status.st_ino)
            state = other;
    }
    return state;
}

Family seenByGenl(const std::string& name) {
    Family family;
    const std::string answer = saidBy("genl ctrl get name " + name + " 2>/dev/null");
    (void)std::sscanf(answer.c_str(), " Name: %*s ID: %i", &family.id);
    const std::size_t group = answer.find("ID-", answer.find("multicast groups:"));
    char groupName[17] = "";
    if (group != std::string::npos &&
        std::sscanf(answer.c_str() + group, "ID-%i name: %16s", &family.groupId, groupName) == 2)
        family.groupName = groupName;
    return family;
}

int openDescriptors() {
    const std::filesystem::directory_iterator folder("/proc/self/fd");
    return static_cast<int>(std::distance(begin(folder), end(folder)));
}

void awaitEmpty(int socket) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(longest);
    while (seenByKernel(socket).unread != 0) {
        ASSERT_LT(std::chrono::steady_clock::now(), end) << "nobody reads the socket";
        std::this_thread::yield();
    }
}

bool restsWhileIdle() {
    constexpr int second = 1000;
    constexpr double busy = 0.3;
    // A thread that spins does so each time; time that a busy host took away looks like it, once.
    for (int round = 0; round < 3; ++round) {
        const double before = processorSeconds();
        ::poll(nullptr, 0, second);
        if (processorSeconds() - before < busy)
            return true;
    }
    return false;
}

int socketOf(const std::string& family) {
    return endPointOf(*ZRNetlink::instance(), family)->getReadEndPointID();
}

}  // namespace ZR::test
