// Layout of events, end points and the dispatcher, which the common library and applications share
// with this one.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <type_traits>

#include "common/zrapi_common/zr_end_point_handler.h"
#include "common/zrapi_common/zr_event.h"
#include "common/zrapi_common/zr_event_queue.h"
#include "hardware/netlink/zr_netlink.h"
#include "tests/public_api/member_offset.h"

namespace {

using ZR::ZREvent;
using ZR::ZRNetlink;
using ZR::ZRNetlinkEndPoint;
using ZR::ZRSignal;
using ZR::ZRTrigger;

/// What events are to look like to the compiler.
struct EventReference {
    virtual ~EventReference() = default;
    int kind = 0;
    int code = 0;
    int reserved1 = 0;
    double reserved2 = 0;
    double reserved3 = 0;
    std::uint32_t value1 = 0;
    std::uint32_t value2 = 0;
    std::string name;
};

struct TriggerReference : virtual EventReference {
    int own = 0;
};

struct SignalReference : virtual TriggerReference {
    ~SignalReference() override = default;
    int own[4] = {0, 0, 0, 0};
};

struct TriggerMembers : ZRTrigger {
    static constexpr auto ownMember = &TriggerMembers::reservedTrigger;
};

struct SignalMembers : ZRSignal {
    static constexpr auto firstMember = &SignalMembers::reservedSignal1;
    static constexpr auto secondMember = &SignalMembers::reservedSignal2;
    static constexpr auto thirdMember = &SignalMembers::reservedSignal3;
    static constexpr auto fourthMember = &SignalMembers::reservedSignal4;
    bool isZero() const {
        return reservedSignal1 == 0 && reservedSignal2 == 0 && reservedSignal3 == 0 &&
               reservedSignal4 == 0 && reservedTrigger == 0;
    }
};

/// What the end points of drivers are to look like to the compiler.
struct EndPointReference {
    virtual ~EndPointReference() = default;
    std::uint32_t reserved = 0;
};

struct NetlinkEndPointReference : EndPointReference {
    std::string familyName;
    int familyId = 0;
    int socketFd = 0;
    bool connected = false;
};

struct NetlinkEndPointMembers : ZRNetlinkEndPoint {
    static constexpr auto familyNameMember = &NetlinkEndPointMembers::familyName;
    static constexpr auto familyIdMember = &NetlinkEndPointMembers::familyId;
    static constexpr auto socketMember = &NetlinkEndPointMembers::socketFd;
    static constexpr auto connectedMember = &NetlinkEndPointMembers::connected;
};

/// What the dispatcher is to look like to the compiler.
struct NetlinkReference {
    virtual ~NetlinkReference() = default;
    std::map<std::string, std::shared_ptr<ZRNetlinkEndPoint>> endPoints;
    std::set<std::shared_ptr<ZRNetlinkEndPoint>> endPointSet;
    ZR::ZREventQueue* eventQueue = nullptr;
    ZR::ZREndPointManager* endPointManager = nullptr;
};

struct NetlinkMembers : ZRNetlink {
    static constexpr auto endPointsMember = &NetlinkMembers::endPoints;
    static constexpr auto endPointSetMember = &NetlinkMembers::endPointSet;
    static constexpr auto eventQueueMember = &NetlinkMembers::eventQueue;
    static constexpr auto endPointManagerMember = &NetlinkMembers::endPointManager;
};

/// Where in an object its part of a base class begins.
template <typename Base, typename Derived>
std::ptrdiff_t baseOffset(const Derived& object) {
    return reinterpret_cast<const char*>(static_cast<const Base*>(&object)) -
           reinterpret_cast<const char*>(&object);
}

}  // namespace

TEST(EventLayout_pure, members_of_an_event_stand_in_their_order) {
    EXPECT_EQ(offset(&ZREvent::kind), offset(&EventReference::kind));
    EXPECT_EQ(offset(&ZREvent::code), offset(&EventReference::code));
    EXPECT_EQ(offset(&ZREvent::reserved1), offset(&EventReference::reserved1));
    EXPECT_EQ(offset(&ZREvent::reserved2), offset(&EventReference::reserved2));
    EXPECT_EQ(offset(&ZREvent::reserved3), offset(&EventReference::reserved3));
    EXPECT_EQ(offset(&ZREvent::value1), offset(&EventReference::value1));
    EXPECT_EQ(offset(&ZREvent::value2), offset(&EventReference::value2));
    EXPECT_EQ(offset(&ZREvent::name), offset(&EventReference::name));
    EXPECT_EQ(sizeof(ZREvent), sizeof(EventReference));
}

TEST(EventLayout_pure, members_of_an_event_have_their_types) {
    EXPECT_TRUE((std::is_same_v<decltype(ZREvent::kind), int>));
    EXPECT_TRUE((std::is_same_v<decltype(ZREvent::code), int>));
    EXPECT_TRUE((std::is_same_v<decltype(ZREvent::reserved1), int>));
    EXPECT_TRUE((std::is_same_v<decltype(ZREvent::reserved2), double>));
    EXPECT_TRUE((std::is_same_v<decltype(ZREvent::reserved3), double>));
    EXPECT_TRUE((std::is_same_v<decltype(ZREvent::value1), std::uint32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(ZREvent::value2), std::uint32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(ZREvent::name), std::string>));
}

TEST(EventLayout_pure, triggers_and_signals_have_their_own_numbers_and_virtual_bases) {
    const ZRSignal signal;
    const SignalReference reference;
    EXPECT_EQ(sizeof(ZRTrigger), sizeof(TriggerReference));
    EXPECT_EQ(sizeof(ZRSignal), sizeof(SignalReference));
    EXPECT_EQ(baseOffset<ZREvent>(signal), baseOffset<EventReference>(reference));
    EXPECT_EQ(baseOffset<ZRTrigger>(signal), baseOffset<TriggerReference>(reference));
    EXPECT_EQ(baseOffset<ZREvent>(ZRTrigger()), baseOffset<EventReference>(TriggerReference()));
    const auto word = static_cast<std::ptrdiff_t>(sizeof(void*));
    EXPECT_EQ(offset(TriggerMembers::ownMember), word);
    EXPECT_EQ(offset(SignalMembers::firstMember), word);
    EXPECT_EQ(offset(SignalMembers::secondMember), word + 4);
    EXPECT_EQ(offset(SignalMembers::thirdMember), word + 8);
    EXPECT_EQ(offset(SignalMembers::fourthMember), word + 12);
}

TEST(EventLayout_pure, events_stand_where_64_bit_programs_expect_them) {
    if (sizeof(void*) != 8)
        GTEST_SKIP() << "not a 64 bit machine";
    EXPECT_EQ(offset(&ZREvent::kind), 8);
    EXPECT_EQ(offset(&ZREvent::code), 12);
    EXPECT_EQ(offset(&ZREvent::value1), 40);
    EXPECT_EQ(offset(&ZREvent::value2), 44);
    EXPECT_EQ(offset(&ZREvent::name), 48);
    EXPECT_EQ(sizeof(ZREvent), 80U);
    const ZRSignal signal;
    EXPECT_EQ(baseOffset<ZREvent>(signal), 40);
    EXPECT_EQ(baseOffset<ZRTrigger>(signal), 24);
    EXPECT_EQ(sizeof(ZRSignal), 120U);
}

TEST(EventLayout_pure, an_event_starts_with_every_number_zero) {
    const SignalMembers signal;
    EXPECT_EQ(signal.kind, 0);
    EXPECT_EQ(signal.code, 0);
    EXPECT_EQ(signal.reserved1, 0);
    EXPECT_EQ(signal.reserved2, 0.0);
    EXPECT_EQ(signal.reserved3, 0.0);
    EXPECT_EQ(signal.value1, 0U);
    EXPECT_EQ(signal.value2, 0U);
    EXPECT_EQ(signal.name, "");
    EXPECT_TRUE(signal.isZero());
}

TEST(EventLayout_pure, a_queue_takes_events_by_the_third_slot) {
    EXPECT_EQ(slot(&ZR::ZREventQueue::postEvent), 2);
    EXPECT_TRUE(std::has_virtual_destructor_v<ZR::ZREventQueue>);
}

TEST(EventLayout_pure, a_handler_has_its_operations_in_order_and_no_member) {
    EXPECT_EQ(slot(&ZR::ZREndPointHandler::onEndPointReadable), 0);
    EXPECT_EQ(slot(&ZR::ZREndPointHandler::onEndPointReconnected), 1);
    EXPECT_EQ(slot(&ZR::ZREndPointHandler::onEndPointDisconnected), 2);
    EXPECT_EQ(sizeof(ZR::ZREndPointHandler), sizeof(void*));
    EXPECT_TRUE(std::has_virtual_destructor_v<ZR::ZREndPointHandler>);
}

TEST(NetlinkLayout_pure, members_of_an_end_point_stand_in_their_order) {
    using Members = NetlinkEndPointMembers;
    using Reference = NetlinkEndPointReference;
    EXPECT_EQ(offset(Members::familyNameMember), offset(&Reference::familyName));
    EXPECT_EQ(offset(Members::familyIdMember), offset(&Reference::familyId));
    EXPECT_EQ(offset(Members::socketMember), offset(&Reference::socketFd));
    EXPECT_EQ(offset(Members::connectedMember), offset(&Reference::connected));
    EXPECT_EQ(sizeof(ZRNetlinkEndPoint), sizeof(Reference));
    EXPECT_TRUE((std::is_base_of_v<ZR::ZREndPoint, ZRNetlinkEndPoint>));
}

TEST(NetlinkLayout_pure, members_of_the_dispatcher_stand_in_their_order) {
    using Members = NetlinkMembers;
    using Reference = NetlinkReference;
    EXPECT_EQ(offset(Members::endPointsMember), offset(&Reference::endPoints));
    EXPECT_EQ(offset(Members::endPointSetMember), offset(&Reference::endPointSet));
    EXPECT_EQ(offset(Members::eventQueueMember), offset(&Reference::eventQueue));
    EXPECT_EQ(offset(Members::endPointManagerMember), offset(&Reference::endPointManager));
    EXPECT_EQ(sizeof(ZRNetlink), sizeof(Reference));
    EXPECT_TRUE((std::is_base_of_v<ZR::ZREndPointHandler, ZRNetlink>));
}

TEST(NetlinkLayout_pure, members_stand_where_64_bit_programs_expect_them) {
    if (sizeof(void*) != 8)
        GTEST_SKIP() << "not a 64 bit machine";
    EXPECT_EQ(offset(NetlinkEndPointMembers::familyNameMember), 16);
    EXPECT_EQ(offset(NetlinkEndPointMembers::familyIdMember), 48);
    EXPECT_EQ(offset(NetlinkEndPointMembers::socketMember), 52);
    EXPECT_EQ(offset(NetlinkEndPointMembers::connectedMember), 56);
    EXPECT_EQ(sizeof(ZRNetlinkEndPoint), 64U);
    EXPECT_EQ(offset(NetlinkMembers::endPointsMember), 8);
    EXPECT_EQ(offset(NetlinkMembers::endPointSetMember), 56);
    EXPECT_EQ(offset(NetlinkMembers::eventQueueMember), 104);
    EXPECT_EQ(offset(NetlinkMembers::endPointManagerMember), 112);
    EXPECT_EQ(sizeof(ZRNetlink), 120U);
}

TEST(NetlinkLayout_pure, there_is_one_dispatcher) {
    EXPECT_FALSE(std::is_default_constructible_v<ZRNetlink>);
    EXPECT_FALSE(std::is_copy_constructible_v<ZRNetlink>);
    EXPECT_FALSE(std::is_copy_assignable_v<ZRNetlink>);
}
