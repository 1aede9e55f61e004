#include "hardware/can/zr_can_raw.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

#include "common/file_descriptor_internal.h"
#include "common/zrapi_common/zr_debug.h"
#include "common/zrapi_common/zr_result.h"
#include "common/zrapi_utility/zr_to_string.h"
#include "hardware/can/can_socket.h"

namespace ZR {
namespace {

const std::string sysPathCAN = "/sys/class/net/can";  // NOLINT(cert-err58-cpp)
constexpr char receivedFrames[] = "/statistics/rx_packets";
constexpr char sentFrames[] = "/statistics/tx_packets";
constexpr unsigned int lastPort = 4;

/// The longest line of a counter that is looked at, and its NUL.
using CounterLine = std::array<char, 32>;

/// Reads the first line of @p file, up to its end, that of the file or that of the room.
void readLine(const FileDescriptor& file, CounterLine& line) {
    std::size_t length = 0;
    while (length < line.size() - 1 && std::memchr(line.data(), '\n', length) == nullptr) {
        const ssize_t count = ::read(file.get(), line.data() + length, line.size() - 1 - length);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        length += static_cast<std::size_t>(count);
    }
    line[length] = '\0';
    // Looking for a number goes over line ends: behind an empty line it would read the next one.
    line[std::strcspn(line.data(), "\n")] = '\0';
}

/// Opens a counter's file; also a path that there is no memory for opens none.
FileDescriptor openCounter(unsigned int port, const char* counter) {
    try {
        const std::string path = sysPathCAN + toString(static_cast<int>(port - 1)) + counter;
        return FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    } catch (const std::exception&) {
        return FileDescriptor(-1);
    }
}

unsigned int readCounter(unsigned int port, const char* counter, int& count) {
    // Port 0 passes on purpose: no interface has the number that it leads to.
    if (port > lastPort)
        return ResultPortOutOfRange;
    const FileDescriptor file = openCounter(port, counter);
    if (!file.isOpen())
        return ResultOpenFailed;
    CounterLine line;  // NOLINT(*-init): filled by the read
    readLine(file, line);
    count = static_cast<int>(std::strtol(line.data(), nullptr, 0));
    return ResultSuccess;
}

}  // namespace

unsigned int ZRCANRaw::debugSection = ZRDebug::insertNewDebugSection("zr_can_raw");
int ZRCANRaw::hardwareInterfaceType = 0;

std::unique_ptr<ZRCANRaw> ZRCANRaw::create(int port, unsigned int bitrate,
                                           const char* interfaceName, int retryCount,
                                           int retryDelay, int /*reserved*/) {
    auto endPoint = std::make_unique<CANSocket>();
    endPoint->setRetry(retryCount, retryDelay);
    // The caller learns of a failure by isConnected().
    (void)endPoint->initialize(static_cast<unsigned int>(port), bitrate, interfaceName);
    return endPoint;
}

std::unique_ptr<ZRCANRaw> ZRCANRaw::create(int retryCount, int retryDelay, int /*reserved*/) {
    auto endPoint = std::make_unique<CANSocket>();
    endPoint->setRetry(retryCount, retryDelay);
    return endPoint;
}

unsigned int ZRCANRaw::getRxPackages(unsigned int port, int& count) {
    return readCounter(port, receivedFrames, count);
}

unsigned int ZRCANRaw::getTxPackages(unsigned int port, int& count) {
    return readCounter(port, sentFrames, count);
}

}  // namespace ZR
