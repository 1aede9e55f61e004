// The virtual tables of the loaded hardware library.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/public_api/loaded_library.h"

namespace {

using ZR::test::expectSlots;
using ZR::test::Library;
using ZR::test::slots;

constexpr char readableSymbol[] =
    "_ZN2ZR9ZRNetlink18onEndPointReadableESt10shared_ptrINS_10ZREndPointEEPNS_"
    "17ZREndPointManagerE";

}  // namespace

TEST(SlotOrder_pure, input_output_has_its_destructor_and_nothing_else) {
    const Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    const std::vector<std::string> expected{"ZR::ZRInputOutput::~ZRInputOutput()",
                                            "ZR::ZRInputOutput::~ZRInputOutput()"};
    EXPECT_EQ(slots(library, "_ZTVN2ZR13ZRInputOutputE"), expected);
}

TEST(SlotOrder_pure, dimmable_has_its_operations_in_order) {
    const Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    const std::vector<std::string> expected{
        "ZR::ZRDimmable::~ZRDimmable()",
        "ZR::ZRDimmable::~ZRDimmable()",
        "ZR::ZRDimmable::getIntensity(unsigned int*, ZR::ZRDimmableDevice)",
        "ZR::ZRDimmable::setIntensity(unsigned int, ZR::ZRDimmableDevice)",
        "ZR::ZRDimmable::getColor(unsigned int*, ZR::ZRDimmableDevice)",
        "ZR::ZRDimmable::setColor(unsigned int, ZR::ZRDimmableDevice)",
        "ZR::ZRDimmable::setMinDisplayBacklightIntensity(unsigned int)",
        "ZR::ZRDimmable::getMinDisplayBacklightIntensity(unsigned int*)",
        "ZR::ZRDimmable::isColorSupported(ZR::ZRDimmableDevice) const"};
    EXPECT_EQ(slots(library, "_ZTVN2ZR10ZRDimmableE"), expected);
}

TEST(SlotOrder_pure, can_sockets_have_the_end_points_operations_and_then_their_own) {
    expectSlots(
        "_ZTVN2ZR9CANSocketE",
        {"_ZN2ZR9CANSocketD1Ev", "_ZN2ZR9CANSocketD0Ev", "_ZNK2ZR9CANSocket17getReadEndPointIDEv",
         "_ZNK2ZR9CANSocket18getWriteEndPointIDEv", "_ZNK2ZR9CANSocket11isConnectedEv",
         "_ZN2ZR9CANSocket9reconnectEv", "_ZN2ZR9CANSocket10initializeEjjPKc",
         "_ZN2ZR9CANSocket10initializeEj", "_ZN2ZR9CANSocket4sendEPNS_12ZRCANMessageE",
         "_ZN2ZR9CANSocket7receiveEPNS_12ZRCANMessageE", "_ZN2ZR9CANSocket10setPollingEbj",
         "_ZN2ZR9CANSocket11addIDFilterEjj"});
}

TEST(SlotOrder_pure, netlink_end_points_have_the_end_points_operations_only) {
    expectSlots(
        "_ZTVN2ZR17ZRNetlinkEndPointE",
        {"_ZN2ZR17ZRNetlinkEndPointD1Ev", "_ZN2ZR17ZRNetlinkEndPointD0Ev",
         "_ZNK2ZR17ZRNetlinkEndPoint17getReadEndPointIDEv",
         "_ZNK2ZR17ZRNetlinkEndPoint18getWriteEndPointIDEv",
         "_ZNK2ZR17ZRNetlinkEndPoint11isConnectedEv", "_ZN2ZR17ZRNetlinkEndPoint9reconnectEv"});
}

TEST(SlotOrder_pure, the_dispatcher_has_the_handlers_operations_and_then_its_destructor) {
    expectSlots(
        "_ZTVN2ZR9ZRNetlinkE",
        {readableSymbol, "_ZN2ZR9ZRNetlink21onEndPointReconnectedESt10shared_ptrINS_10ZREndPointEE",
         "_ZN2ZR9ZRNetlink22onEndPointDisconnectedESt10shared_ptrINS_10ZREndPointEE",
         "_ZN2ZR9ZRNetlinkD1Ev", "_ZN2ZR9ZRNetlinkD0Ev"});
}

TEST(SlotOrder_pure, events_have_their_destructor_and_nothing_else) {
    expectSlots("_ZTVN2ZR7ZREventE", {"_ZN2ZR7ZREventD1Ev", "_ZN2ZR7ZREventD0Ev"});
}

/// Whoever provides the common library need not bring them.
TEST(SlotOrder_pure, the_tables_of_the_classes_defined_in_headers_are_here) {
    const Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    for (const char* table : {"_ZTVN2ZR10ZREndPointE", "_ZTVN2ZR17ZREndPointHandlerE",
                              "_ZTVN2ZR7ZREventE", "_ZTVN2ZR9ZRTriggerE", "_ZTVN2ZR8ZRSignalE"}) {
        Dl_info where{};
        ASSERT_NE(::dladdr(library.symbol<void* const>(table), &where), 0) << table;
        EXPECT_NE(std::strstr(where.dli_fname, "libZRAPI_Hardware"), nullptr) << table;
    }
}

TEST(SlotOrder_pure, controllers_have_their_operations_in_order) {
    const Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    std::vector<std::string> operations = slots(library, "_ZTVN2ZR15CANLibsocketcanE");
    ASSERT_EQ(operations.size(), 4U);
    // The destructor is inline: each library has its own.
    operations.erase(operations.begin(), operations.begin() + 2);
    const std::vector<std::string> expected{
        "ZR::CANLibsocketcan::setBaudrate(unsigned int, unsigned int)",
        "ZR::CANLibsocketcan::getBaudrate(unsigned int) const"};
    EXPECT_EQ(operations, expected);
}
