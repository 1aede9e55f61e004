// Sends a CAN frame from port 1 and receives it on port 2: exchange_can_frames BIT/S

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <future>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>

#include <common/zrapi_common/zr_end_point_handler.h>
#include <common/zrapi_common/zr_end_point_manager.h>
#include <common/zrapi_common/zr_result.h>
#include <hardware/can/zr_can_raw.h>

namespace {

constexpr int sendRetries = 10;
constexpr int retryDelay = 1000;  // microseconds
constexpr std::chrono::seconds longestWait(5);

/// Takes one frame of an end point, on the manager's thread.
class Receiver : public ZR::ZREndPointHandler {
  public:
    std::future<ZR::ZRCANMessage> frame() { return frame_.get_future(); }

    void onEndPointReadable(std::shared_ptr<ZR::ZREndPoint> endPoint,
                            ZR::ZREndPointManager* manager) override {
        ZR::ZRCANMessage message{};
        const auto can = std::dynamic_pointer_cast<ZR::ZRCANRaw>(endPoint);
        if (can == nullptr || can->receive(&message) != ZR::ResultSuccess)
            return;
        // One frame is all that this program wants; an application stays registered.
        manager->removeEndPoint(endPoint);
        frame_.set_value(message);
    }

    void onEndPointReconnected(std::shared_ptr<ZR::ZREndPoint> /*endPoint*/) override {}
    void onEndPointDisconnected(std::shared_ptr<ZR::ZREndPoint> /*endPoint*/) override {}

  private:
    std::promise<ZR::ZRCANMessage> frame_;
};

/// Sets a port's bit rate, starts it and opens a socket on it.
std::shared_ptr<ZR::ZRCANRaw> openPort(int port, unsigned int bitrate, const char* interface) {
    return ZR::ZRCANRaw::create(port, bitrate, interface, sendRetries, retryDelay, 0);
}

void show(const ZR::ZRCANMessage& message) {
    constexpr std::uint32_t identifierBits = 0x1FFFFFFF;  // the bits above are flags
    std::cout << "received " << std::hex << std::setfill('0') << (message.id & identifierBits);
    for (unsigned int i = 0; i < message.length; ++i)
        std::cout << ' ' << std::setw(2) << unsigned{message.data[i]};
    std::cout << '\n';
}

}  // namespace

int main(int argc, char** argv) {
    const std::string word = argc == 2 ? argv[1] : "";
    const int bitrate = std::atoi(word.c_str());
    if (bitrate <= 0 || word != std::to_string(bitrate)) {
        std::cerr << "usage: exchange_can_frames BIT/S\n";
        return 2;
    }
    const auto sender = openPort(1, static_cast<unsigned int>(bitrate), "can0");
    const auto listener = openPort(2, static_cast<unsigned int>(bitrate), "can1");
    if (!sender->isConnected() || !listener->isConnected()) {
        std::cerr << "the CAN ports 1 and 2 cannot be opened\n";
        return 1;
    }

    // The handler is made before the manager, so that it outlives it.
    Receiver receiver;
    std::future<ZR::ZRCANMessage> frame = receiver.frame();
    ZR::ZREndPointManager manager;
    manager.addEndPoint(listener, &receiver);

    ZR::ZRCANMessage message{0, 0x123, 2, {0x11, 0x22}, 0};
    const unsigned int result = sender->send(&message);
    if (result != ZR::ResultSuccess) {
        std::cerr << "send: " << ZR::resultText(result) << " (" << result << ")\n";
        return 1;
    }
    if (frame.wait_for(longestWait) != std::future_status::ready) {
        std::cerr << "nothing came; are the two ports on one bus?\n";
        return 1;
    }
    show(frame.get());
    return 0;
}
