#include "common/zrapi_common/zr_event.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace ZR::test {
namespace {

/// Shows what derived classes of an application may reach.
class OpenSignal : public ZRSignal {
  public:
    int sum() const {
        return reservedTrigger + reservedSignal1 + reservedSignal2 + reservedSignal3 +
               reservedSignal4;
    }
    void fill() {
        reservedTrigger = 1;
        reservedSignal4 = 2;
    }
};

/// Whether a derived class can be reached at compile time: not from a virtual base.
template <typename Base, typename Derived, typename = void>
struct hasWayBack : std::false_type {};

template <typename Base, typename Derived>
struct hasWayBack<Base, Derived,
                  std::void_t<decltype(static_cast<Derived*>(std::declval<Base*>()))>>
    : std::true_type {};

struct ByteOffsets {
    std::ptrdiff_t kind, code, reserved1, reserved2, reserved3, value1, value2, name;
};

/// Where the members of an event are, counted from its beginning.
ByteOffsets offsetsIn(const ZREvent& event) {
    const auto* const start = reinterpret_cast<const char*>(&event);
    const auto offset = [start](const auto& member) {
        return reinterpret_cast<const char*>(&member) - start;
    };
    return {offset(event.kind),      offset(event.code),      offset(event.reserved1),
            offset(event.reserved2), offset(event.reserved3), offset(event.value1),
            offset(event.value2),    offset(event.name)};
}

void expectZero(const ZREvent& event) {
    EXPECT_EQ(event.kind, 0);
    EXPECT_EQ(event.code, 0);
    EXPECT_EQ(event.reserved1, 0);
    EXPECT_EQ(event.reserved2, 0.0);
    EXPECT_EQ(event.reserved3, 0.0);
    EXPECT_EQ(event.value1, 0U);
    EXPECT_EQ(event.value2, 0U);
    EXPECT_EQ(event.name, "");
}

}  // namespace

TEST(Event_pure, begins_with_every_number_zero_and_no_name) {
    expectZero(ZREvent());
    expectZero(ZRTrigger());
    expectZero(ZRSignal());
    EXPECT_EQ(OpenSignal().sum(), 0);
}

TEST(Event_pure, members_follow_each_other_in_their_order) {
    const ByteOffsets at = offsetsIn(ZREvent());
    EXPECT_EQ(at.kind, static_cast<std::ptrdiff_t>(sizeof(void*)));
    EXPECT_EQ(at.code, at.kind + 4);
    EXPECT_EQ(at.reserved1, at.kind + 8);
    EXPECT_EQ(at.reserved2 % static_cast<std::ptrdiff_t>(alignof(ZREvent)), 0);
    EXPECT_EQ(at.reserved3, at.reserved2 + 8);
    EXPECT_EQ(at.value1, at.reserved2 + 16);
    EXPECT_EQ(at.value2, at.value1 + 4);
    EXPECT_EQ(at.name, at.value2 + 4);
    EXPECT_EQ(sizeof(ZREvent), static_cast<std::size_t>(at.name) + sizeof(std::string));
}

TEST(Event_pure, triggers_and_signals_have_one_event_in_common) {
    ZRSignal signal;
    ZRTrigger& trigger = signal;
    ZREvent& event = signal;
    trigger.value1 = 7;
    EXPECT_EQ(event.value1, 7U);
    EXPECT_EQ(signal.value1, 7U);
    EXPECT_EQ(&static_cast<ZREvent&>(trigger), &event);
}

TEST(Event_pure, an_event_knows_whether_it_is_a_signal) {
    ZRSignal signal;
    ZRTrigger trigger;
    const auto event = std::make_unique<ZREvent>();
    ZREvent& ofSignal = signal;
    ZREvent& ofTrigger = trigger;
    EXPECT_EQ(dynamic_cast<ZRSignal*>(&ofSignal), &signal);
    EXPECT_EQ(dynamic_cast<ZRTrigger*>(&ofSignal), &signal);
    EXPECT_EQ(dynamic_cast<ZRTrigger*>(&ofTrigger), &trigger);
    EXPECT_EQ(dynamic_cast<ZRSignal*>(&ofTrigger), nullptr);
    EXPECT_EQ(dynamic_cast<ZRTrigger*>(event.get()), nullptr);
}

TEST(Event_pure, its_bases_are_virtual) {
    EXPECT_FALSE((hasWayBack<ZREvent, ZRTrigger>::value));
    EXPECT_FALSE((hasWayBack<ZRTrigger, ZRSignal>::value));
    EXPECT_TRUE((hasWayBack<ZRSignal, OpenSignal>::value));
    EXPECT_TRUE((std::is_base_of_v<ZREvent, ZRTrigger> && std::is_base_of_v<ZRTrigger, ZRSignal>));
}

TEST(Event_pure, copies_carry_all_members) {
    OpenSignal signal;
    signal.kind = 6;
    signal.code = 900;
    signal.reserved2 = 0.5;
    signal.value2 = 0xFFFFFFFF;
    signal.name = "a name of more than fifteen letters";
    signal.fill();
    const OpenSignal copy = signal;
    EXPECT_EQ(copy.kind, 6);
    EXPECT_EQ(copy.code, 900);
    EXPECT_EQ(copy.reserved2, 0.5);
    EXPECT_EQ(copy.value2, 0xFFFFFFFF);
    EXPECT_EQ(copy.name, signal.name);
    EXPECT_EQ(copy.sum(), 3);
}

}  // namespace ZR::test
