#include <linux/can.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <memory>
#include <utility>

#include "benchmarks/can_pair.h"
#include "benchmarks/comparison.h"
#include "benchmarks/operations.h"

namespace ZR::benchmarks {
namespace {

constexpr std::uint32_t identifier = 0x123;

/// A read and the time stamp that belongs to each frame; false while nothing is there.
bool readFrame(int descriptor, can_frame& frame) {
    if (::read(descriptor, &frame, sizeof frame) != sizeof frame)
        return false;
    timespec now;  // NOLINT(*-init): filled by the call
    return ::clock_gettime(CLOCK_MONOTONIC, &now) == 0;
}

bool writeFrame(int descriptor, const can_frame& frame) {
    return ::write(descriptor, &frame, sizeof frame) == sizeof frame;
}

// The other end is no part of either side: it fills the queue before a batch and empties it after
// one, so that a batch holds one kind of call alone. On the virtual interface a write includes the
// delivery to the other end's queue, for the floor as for the library.
void compareReceive() {
    const std::shared_ptr<const CanPair>& pair = canPair();
    Comparison receive;
    receive.operation = "CAN receive";
    receive.longestBatch = CanPair::longestQueue;
    receive.before = [pair](long frames) { return pair->fill(frames); };
    compare(
        std::move(receive),
        [descriptor = pair->socket()->getReadEndPointID()] {
            can_frame frame;  // NOLINT(*-init): filled by the read
            return readFrame(descriptor, frame);
        },
        [socket = pair->socket()] {
            ZRCANMessage message;  // NOLINT(*-init): filled by the library
            return socket->receive(&message) == 0;
        });
}

void compareSend() {
    const std::shared_ptr<const CanPair>& pair = canPair();
    Comparison send;
    send.operation = "CAN send";
    send.longestBatch = CanPair::longestQueue;
    send.after = [pair](long frames) { return pair->drain(frames); };
    can_frame frame{};
    frame.can_id = identifier;
    frame.can_dlc = CAN_MAX_DLEN;
    const auto message = std::make_shared<ZRCANMessage>();
    message->id = identifier;
    message->length = CAN_MAX_DLEN;
    compare(
        std::move(send),
        [descriptor = pair->socket()->getWriteEndPointID(), frame] {
            return writeFrame(descriptor, frame);
        },
        [socket = pair->socket(), message] { return socket->send(message.get()) == 0; });
}

/// Numbers frames on their way out and tells whether they arrive in that order.
class Sequence {
  public:
    void stamp(std::uint8_t* data) {
        std::memcpy(data, &sent_, sizeof sent_);
        ++sent_;
    }
    bool isNext(const std::uint8_t* data) {
        std::uint32_t number = 0;
        std::memcpy(&number, data, sizeof number);
        return number == received_++;
    }

  private:
    std::uint32_t sent_ = 0;
    std::uint32_t received_ = 0;
};

/// A batch that sends all its frames and then receives them: more than the queue holds would be lost.
Batch burstOf(Batch sending, Batch receiving) {
    return [sending = std::move(sending), receiving = std::move(receiving)](long frames) {
        const double there = sending(frames);
        if (there < 0)
            return there;
        const double back = receiving(frames);
        return back < 0 ? back : there + back;
    };
}

Batch bareBurst(const CanPair& pair) {
    const auto sequence = std::make_shared<Sequence>();
    const auto send = [descriptor = pair.socket()->getWriteEndPointID(), sequence] {
        can_frame frame{};
        frame.can_id = identifier;
        frame.can_dlc = CAN_MAX_DLEN;
        sequence->stamp(frame.data);
        return writeFrame(descriptor, frame);
    };
    const auto receive = [descriptor = pair.peer()->getReadEndPointID(), sequence] {
        can_frame frame;  // NOLINT(*-init): filled by the read
        while (!readFrame(descriptor, frame)) {
            if (errno != EAGAIN || !waitForFrame(descriptor))
                return false;
        }
        return sequence->isNext(frame.data);
    };
    return burstOf(batchOf(send), batchOf(receive));
}

Batch libraryBurst(const CanPair& pair) {
    const auto sequence = std::make_shared<Sequence>();
    const auto send = [socket = pair.socket(), sequence] {
        ZRCANMessage message{};
        message.id = identifier;
        message.length = CAN_MAX_DLEN;
        sequence->stamp(message.data);
        return socket->send(&message) == 0;
    };
    const auto receive = [socket = pair.peer(), sequence] {
        ZRCANMessage message;  // NOLINT(*-init): filled by the library
        while (socket->receive(&message) != 0) {
            if (!waitForFrame(socket->getReadEndPointID()))
                return false;
        }
        return sequence->isNext(message.data);
    };
    return burstOf(batchOf(send), batchOf(receive));
}

void compareBursts() {
    const std::shared_ptr<const CanPair>& pair = canPair();
    Comparison burst;
    burst.operation = "CAN frame sent and received";
    burst.longestBatch = CanPair::longestQueue;
    burst.showsRate = true;
    burst.floor = bareBurst(*pair);
    burst.library = libraryBurst(*pair);
    registerComparison(std::move(burst));
}

}  // namespace

void compareCan() {
    compareReceive();
    compareSend();
    compareBursts();
}

}  // namespace ZR::benchmarks
