#include "can_witness.h"

#include <gtest/gtest.h>
#include <libsocketcan.h>
#include <linux/can.h>
#include <net/if.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <utility>

namespace ZR::test {
namespace {

constexpr std::chrono::seconds limit{30};
constexpr int limitMilliseconds = 30000;
constexpr char candumpLimit[] = "30000";
constexpr char interfaces[] = "/sys/class/net/";
constexpr char controllerDriver[] = "/sys/bus/pci/drivers/kvaser_pci/";
constexpr std::array receiveLists{"/proc/net/can/rcvlist_all", "/proc/net/can/rcvlist_sff",
                                  "/proc/net/can/rcvlist_eff", "/proc/net/can/rcvlist_fil",
                                  "/proc/net/can/rcvlist_err"};
constexpr uid_t nobody = 65534;

/// How many filters of all sockets let frames of an interface through.
int filters(const std::string& interface) {
    int count = 0;
    for (const char* list : receiveLists) {
        std::ifstream lines(list);
        for (std::string line; std::getline(lines, line);) {
            std::istringstream words(line);
            std::string first;
            words >> first;
            count += first == interface ? 1 : 0;
        }
    }
    return count;
}

ifreq flagsOf(int socket, const std::string& interface) {
    ifreq request{};
    interface.copy(request.ifr_name, IFNAMSIZ - 1);
    EXPECT_EQ(0, ::ioctl(socket, SIOCGIFFLAGS, &request)) << interface;
    return request;
}

void writeText(const std::string& path, const std::string& text) {
    std::ofstream file(path);
    file << text << std::flush;
    EXPECT_TRUE(file.good()) << path << " refused " << text;
}

}  // namespace

bool eventually(const std::function<bool()>& condition) {
    constexpr std::chrono::milliseconds distance{5};
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(distance);
    }
    return true;
}

std::string shownByIp(const std::string& interface, const std::string& words) {
    const std::string text = saidBy("ip -details -statistics link show " + interface) + ' ';
    const std::size_t found = text.find(' ' + words + ' ');
    if (found == std::string::npos)
        return "";
    const std::size_t begin = found + words.size() + 2;
    return text.substr(begin, text.find_first_of(" )\n", begin) - begin);
}

std::string errorsCountedByIp(const std::string& interface) {
    const std::string text = saidBy("ip -details -statistics link show " + interface);
    constexpr char lastTitle[] = " bus-off\n";
    const std::size_t title = text.find(lastTitle);
    if (title == std::string::npos)
        return "";
    std::istringstream numbers(text.substr(title + std::strlen(lastTitle)));
    std::string counted;
    int number = 0;
    for (int i = 0; i < 6 && numbers >> number; ++i)
        counted += (i == 0 ? "" : " ") + std::to_string(number);
    return counted;
}

int counter(const std::string& interface, const std::string& name) {
    int value = -1;
    std::ifstream(interfaces + interface + "/statistics/" + name) >> value;
    return value;
}

void setLink(const std::string& interface, bool up) {
    const int socket = ::socket(AF_INET, SOCK_DGRAM, 0);
    ifreq request = flagsOf(socket, interface);
    const int flags = up ? request.ifr_flags | IFF_UP : request.ifr_flags & ~IFF_UP;
    request.ifr_flags = static_cast<short>(flags);
    EXPECT_EQ(0, ::ioctl(socket, SIOCSIFFLAGS, &request)) << interface << std::strerror(errno);
    ::close(socket);
}

bool isUp(const std::string& interface) {
    const int socket = ::socket(AF_INET, SOCK_DGRAM, 0);
    const bool up = (flagsOf(socket, interface).ifr_flags & IFF_UP) != 0;
    ::close(socket);
    return up;
}

void CanPorts::SetUp() {
    setLink("can0", false);
    setLink("can1", false);
}

void configure(const std::string& interface, unsigned int bitrate,
               unsigned int restartMilliseconds) {
    setLink(interface, false);
    EXPECT_EQ(0, can_set_restart_ms(interface.c_str(), restartMilliseconds)) << interface;
    EXPECT_EQ(0, can_set_bitrate(interface.c_str(), bitrate)) << interface;
    setLink(interface, true);
}

void joinBoth(unsigned int bitrate) {
    configure("can0", bitrate);
    configure("can1", bitrate);
}

UnpluggedController::UnpluggedController(const std::string& interface)
    : slot_(std::filesystem::canonical(interfaces + interface + "/device").filename()) {
    writeText(std::string(controllerDriver) + "unbind", slot_);
}

void UnpluggedController::plugIn() {
    if (!slot_.empty())
        writeText(std::string(controllerDriver) + "bind", std::exchange(slot_, ""));
}

VirtualPort::VirtualPort(std::string interface) : name_(std::move(interface)) {
    run("ip link add dev " + name_ + " up type vcan");
}

void VirtualPort::remove() {
    if (!name_.empty())
        run("ip link del dev " + std::exchange(name_, ""));
}

Candump::Candump(const std::string& interface, int count) {
    const std::string listened = interface.substr(0, interface.find(','));
    // The kernel enters one filter after the other: with the first alone the rest is not heard yet.
    const auto named = std::count(interface.begin(), interface.end(), ',');
    const auto wanted = filters(listened) + std::max<std::ptrdiff_t>(named, 1);
    const std::string frameCount = std::to_string(count);
    std::array<int, 2> pipe{};
    EXPECT_EQ(0, ::pipe(pipe.data()));
    pid_ = ::fork();
    if (pid_ == 0) {
        ::dup2(pipe[1], STDOUT_FILENO);
        ::execlp("candump", "candump", "-L", "-r", "4000000", "-n", frameCount.c_str(), "-T",
                 candumpLimit, interface.c_str(), nullptr);
        ::_exit(127);
    }
    ::close(pipe[1]);
    output_ = pipe[0];
    EXPECT_TRUE(eventually([&] { return filters(listened) >= wanted; }));
}

Candump::~Candump() {
    ::close(output_);
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
}

std::vector<std::string> Candump::frames() {
    std::string text;
    std::array<char, 4096> buffer{};
    for (ssize_t count = 0; (count = ::read(output_, buffer.data(), buffer.size())) > 0;)
        text.append(buffer.data(), static_cast<std::size_t>(count));
    std::vector<std::string> heard;
    std::istringstream words(text);
    for (std::string time, interface, frame; words >> time >> interface >> frame;)
        heard.push_back(frame);
    return heard;
}

ZRCANMessage message(std::uint32_t id, std::initializer_list<std::uint8_t> data) {
    ZRCANMessage made{};
    made.id = id;
    made.length = static_cast<std::uint32_t>(data.size());
    std::fill(std::begin(made.data), std::end(made.data), std::uint8_t{0xEE});
    std::copy(data.begin(), data.end(), made.data);
    return made;
}

unsigned int send(ZRCANRaw& socket, ZRCANMessage sent) {
    return socket.send(&sent);
}

std::string notation(const ZRCANMessage& message) {
    constexpr std::uint32_t longOnes = CAN_EFF_FLAG | CAN_ERR_FLAG;
    const std::uint32_t id = message.id & (CAN_EFF_MASK | CAN_ERR_FLAG);
    std::array<char, 3> digits{};
    std::array<char, 16> identifier{};
    std::snprintf(identifier.data(), identifier.size(),
                  (message.id & longOnes) != 0 ? "%08X#" : "%03X#", id);
    std::string text = identifier.data();
    if ((message.id & CAN_RTR_FLAG) != 0)
        return text + "R" + (message.length > 0 ? std::to_string(message.length) : "");
    for (std::uint32_t i = 0; i < std::min<std::uint32_t>(message.length, CAN_MAX_DLEN); ++i) {
        std::snprintf(digits.data(), digits.size(), "%02X", message.data[i]);
        text += digits.data();
    }
    return text;
}

int polled(const ZRCANRaw& socket) {
    pollfd descriptor{socket.getReadEndPointID(), POLLIN, 0};
    ::poll(&descriptor, 1, 0);
    return descriptor.revents;
}

unsigned int receiveSoon(ZRCANRaw& socket, ZRCANMessage& received) {
    pollfd descriptor{socket.getReadEndPointID(), POLLIN, 0};
    EXPECT_EQ(1, ::poll(&descriptor, 1, limitMilliseconds)) << "nothing arrived";
    return socket.receive(&received);
}

std::string receivedSoon(ZRCANRaw& socket) {
    ZRCANMessage received = message(0);
    const unsigned int status = receiveSoon(socket, received);
    return status == 0 ? notation(received) : "status " + std::to_string(status);
}

std::unique_ptr<CANSocket> openPort(unsigned int port, int retryCount) {
    auto socket = std::make_unique<CANSocket>();
    socket->setRetry(retryCount, 0);
    EXPECT_EQ(0U, socket->initialize(port)) << "port " << port;
    return socket;
}

Unprivileged::Unprivileged() {
    EXPECT_EQ(0, ::seteuid(nobody));
}

Unprivileged::~Unprivileged() {
    EXPECT_EQ(0, ::seteuid(0));
}

}  // namespace ZR::test
