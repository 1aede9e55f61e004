#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include "common/zrapi_common/zr_end_point_manager.h"
#include "tests/common/zrapi_common/end_point_doubles.h"

namespace ZR::test {
namespace {

/// Closes what is open under a number and opens the reading end of a line there, as the kernel does
/// with the lowest free number.
void openUnder(int number, const Line& line) {
    const int taken = line.endPoint->descriptor.exchange(-1);
    if (::dup3(taken, number, O_CLOEXEC) != number)
        throw std::runtime_error("dup3");
    ::close(taken);
}

/// An end point that reads under @p number, which another one believes to own.
std::shared_ptr<TestEndPoint> openAnotherUnder(int number, const Line& line) {
    openUnder(number, line);
    return std::make_shared<TestEndPoint>(number);
}

}  // namespace

TEST(EndPointReusedNumber_pure, a_callback_may_open_what_has_hung_up_under_the_same_number) {
    Line line = makePipe();
    const Line next = makePipe();
    RecordingHandler handler;
    std::string received;
    handler.readable = [&](const auto& own, auto* /*manager*/) {
        const std::string bytes = readSome(*own);
        received += bytes.empty() ? "-" : bytes;
        if (bytes.empty())
            openUnder(own->getReadEndPointID(), next);
    };
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    line.hangUp();
    ASSERT_TRUE(handler.waitFor("readable"));
    next.send("x");
    ASSERT_TRUE(handler.waitFor("readable", 2));
    manager.removeEndPoint(line.endPoint);
    EXPECT_EQ(received, "-x");
    EXPECT_EQ(handler.calls(), "readable readable");
}

TEST(EndPointReusedNumber_pure, an_end_point_opened_anew_is_watched_when_it_is_added_again) {
    const Line line = makePipe();
    const Line next = makePipe();
    RecordingHandler handler;
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    openUnder(line.endPoint->descriptor, next);
    manager.addEndPoint(line.endPoint, &handler);
    next.send("x");
    EXPECT_TRUE(handler.waitForBytes(1));
    EXPECT_EQ(handler.count("disconnected"), 0U);
}

TEST(EndPointReusedNumber_pure, a_callback_may_open_its_end_point_anew_and_add_it_again) {
    const Line line = makePipe();
    const Line next = makePipe();
    RecordingHandler handler;
    std::string received;
    handler.readable = [&](const auto& own, auto* manager) {
        received += readSome(*own);
        if (received != "a")
            return;
        openUnder(own->getReadEndPointID(), next);
        manager->addEndPoint(own, &handler);
    };
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    line.send("a");
    ASSERT_TRUE(handler.waitFor("readable"));
    next.send("b");
    ASSERT_TRUE(handler.waitFor("readable", 2));
    manager.removeEndPoint(line.endPoint);
    EXPECT_EQ(received, "ab");
}

TEST(EndPointReusedNumber_pure, a_callback_may_give_the_number_of_its_end_point_to_a_new_one) {
    const Line line = makePipe();
    const Line next = makePipe();
    std::shared_ptr<TestEndPoint> second;
    RecordingHandler secondHandler;
    RecordingHandler handler;
    handler.readable = [&](const auto& /*own*/, auto* manager) {
        line.endPoint->connected = false;
        second = openAnotherUnder(line.endPoint->descriptor.exchange(-1), next);
        manager->addEndPoint(second, &secondHandler);
    };
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    line.send("x");
    ASSERT_TRUE(handler.waitFor("disconnected"));
    next.send("y");
    EXPECT_TRUE(secondHandler.waitForBytes(1));
    EXPECT_EQ(handler.calls(), "readable disconnected");
    EXPECT_EQ(secondHandler.calls(), "readable");
}

TEST(EndPointReusedNumber_pure, who_gave_its_number_away_and_is_open_under_another_is_not_lost) {
    const Line line = makePipe();
    const Line moved = makePipe();
    const Line next = makePipe();
    std::shared_ptr<TestEndPoint> second;
    RecordingHandler secondHandler;
    RecordingHandler handler;
    handler.readable = [&](const auto& own, auto* manager) {
        readSome(*own);
        if (second != nullptr)
            return;
        second = openAnotherUnder(own->getReadEndPointID(), next);
        manager->addEndPoint(second, &secondHandler);
        line.endPoint->descriptor = moved.endPoint->descriptor.exchange(-1);
    };
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    line.send("x");
    ASSERT_TRUE(handler.waitFor("readable"));
    moved.send("y");
    next.send("z");
    EXPECT_TRUE(handler.waitFor("readable", 2));
    EXPECT_TRUE(secondHandler.waitForBytes(1));
    EXPECT_EQ(handler.calls(), "readable readable");
}

TEST(EndPointReusedNumber_pure, removing_the_former_owner_leaves_the_new_one_watched) {
    const Line line = makePipe();
    const Line next = makePipe();
    RecordingHandler handler;
    RecordingHandler secondHandler;
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    const std::shared_ptr<TestEndPoint> second = openAnotherUnder(line.endPoint->descriptor, next);
    manager.addEndPoint(second, &secondHandler);
    manager.removeEndPoint(line.endPoint);
    line.endPoint->descriptor = -1;
    next.send("x");
    EXPECT_TRUE(secondHandler.waitForBytes(1));
    EXPECT_EQ(secondHandler.calls(), "readable");
}

TEST(EndPointReusedNumber_pure, the_former_owner_is_lost_and_never_called_for_the_new_one) {
    const Line line = makePipe();
    const Line next = makePipe();
    RecordingHandler handler;
    RecordingHandler secondHandler;
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    const std::shared_ptr<TestEndPoint> second = openAnotherUnder(line.endPoint->descriptor, next);
    manager.addEndPoint(second, &secondHandler);
    // All watches have been renewed by then.
    ASSERT_TRUE(handler.waitFor("disconnected"));
    next.send("x");
    EXPECT_TRUE(secondHandler.waitForBytes(1));
    EXPECT_EQ(handler.calls(), "disconnected");
    EXPECT_EQ(secondHandler.calls(), "readable");
    manager.removeEndPoint(line.endPoint);
    line.endPoint->descriptor = -1;
}

TEST(EndPointReusedNumber_pure, a_former_owner_that_is_added_again_at_once_is_still_lost) {
    const std::shared_ptr<TestEndPoint> busy = makeAlwaysReadable();
    const Line line = makePipe();
    const Line next = makePipe();
    Gate entered;
    Gate goOn;
    RecordingHandler busyHandler;
    busyHandler.readable = [&](const auto& own, auto* manager) {
        manager->removeEndPoint(own);
        entered.open();
        goOn.wait();
    };
    RecordingHandler handler;
    RecordingHandler secondHandler;
    ZREndPointManager manager;
    manager.addEndPoint(line.endPoint, &handler);
    manager.addEndPoint(busy, &busyHandler);
    ASSERT_TRUE(entered.wait());
    const std::shared_ptr<TestEndPoint> second = openAnotherUnder(line.endPoint->descriptor, next);
    manager.addEndPoint(second, &secondHandler);
    line.endPoint->descriptor = -1;
    manager.addEndPoint(line.endPoint, &handler);
    goOn.open();
    EXPECT_TRUE(handler.waitFor("disconnected"));
    EXPECT_EQ(handler.calls(), "disconnected");
}

TEST(EndPointReusedNumber_pure, the_callback_of_one_loss_may_cause_another) {
    const Line first = makePipe();
    const Line last = makePipe();
    const Line next = makePipe();
    const Line afterNext = makePipe();
    std::shared_ptr<TestEndPoint> third;
    RecordingHandler newHandler;
    RecordingHandler firstHandler;
    RecordingHandler lastHandler;
    ZREndPointManager manager;
    lastHandler.disconnected = [&](const auto& /*own*/, auto* /*manager*/) {
        third = openAnotherUnder(first.endPoint->descriptor.exchange(-1), afterNext);
        manager.addEndPoint(third, &newHandler);
    };
    manager.addEndPoint(first.endPoint, &firstHandler);
    manager.addEndPoint(last.endPoint, &lastHandler);
    const std::shared_ptr<TestEndPoint> second =
        openAnotherUnder(last.endPoint->descriptor.exchange(-1), next);
    manager.addEndPoint(second, &newHandler);
    EXPECT_TRUE(firstHandler.waitFor("disconnected"));
    EXPECT_EQ(firstHandler.calls(), "disconnected");
    EXPECT_EQ(lastHandler.calls(), "disconnected");
    EXPECT_EQ(newHandler.calls(), "");
}

TEST(EndPointReusedNumber_pure, a_copy_of_what_was_opened_before_takes_no_time) {
    const std::shared_ptr<TestEndPoint> endPoint = makeAlwaysReadable();
    const FileDescriptor copy(::fcntl(endPoint->descriptor, F_DUPFD_CLOEXEC, 0));
    const Line next = makePipe();
    RecordingHandler handler;
    handler.readable = [](const auto& /*own*/, auto* /*manager*/) {};
    ZREndPointManager manager;
    manager.addEndPoint(endPoint, &handler);
    ASSERT_TRUE(handler.waitFor("readable"));
    openUnder(endPoint->descriptor, next);
    manager.addEndPoint(endPoint, &handler);
    expectIdle();
    next.send("x");
    EXPECT_TRUE(handler.waitFor("readable", handler.count("readable") + 1));
}

TEST(EndPointReusedNumber_pure, a_copy_of_what_the_former_owner_had_takes_no_time) {
    const std::shared_ptr<TestEndPoint> endPoint = makeAlwaysReadable();
    const FileDescriptor copy(::fcntl(endPoint->descriptor, F_DUPFD_CLOEXEC, 0));
    const Line next = makePipe();
    RecordingHandler handler;
    handler.readable = [](const auto& /*own*/, auto* /*manager*/) {};
    RecordingHandler secondHandler;
    ZREndPointManager manager;
    manager.addEndPoint(endPoint, &handler);
    ASSERT_TRUE(handler.waitFor("readable"));
    const int number = endPoint->descriptor.exchange(-1);
    const std::shared_ptr<TestEndPoint> second = openAnotherUnder(number, next);
    manager.addEndPoint(second, &secondHandler);
    ASSERT_TRUE(handler.waitFor("disconnected"));
    expectIdle();
    next.send("x");
    EXPECT_TRUE(secondHandler.waitForBytes(1));
}

}  // namespace ZR::test
