// Sizes and member order of the CAN classes that programs built against one release rely on in the
// next.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "hardware/can/can_libsocketcan.h"
#include "hardware/can/can_socket.h"
#include "tests/public_api/member_offset.h"

namespace {

using ZR::CANLibsocketcan;
using ZR::CANSocket;
using ZR::ZRCANMessage;

/// What CANLibsocketcan is to look like to the compiler.
struct ControllerReference {
    virtual ~ControllerReference() = default;
    std::string name;
    bool present[4];
    bool baudrateSet[4];
};

struct ControllerMembers : CANLibsocketcan {
    static constexpr auto nameMember = &ControllerMembers::name;
    static constexpr auto presentMember = &ControllerMembers::present;
    static constexpr auto baudrateSetMember = &ControllerMembers::baudrateSet;
    static constexpr auto debugSectionMember = &ControllerMembers::debugSection;
};

/// What an end point is to look like to the compiler.
struct EndPointReference {
    virtual ~EndPointReference() = default;
    std::uint32_t reserved = 0;
};

/// What CANSocket is to look like to the compiler.
struct SocketReference : EndPointReference {
    std::uint32_t port;
    sockaddr_can bindAddress;
    ifreq interfaceRequest;
    int addressLength;
    fd_set readSet;
    bool initialized;
    bool polling;
    std::uint32_t pollTimeout;
    int socketDescriptor;
    bool connected;
    std::vector<can_filter> filters;
    int retryCount;
    int retryDelay;
    int lastError;
    int lastErrno;
};

struct SocketMembers : CANSocket {
    static constexpr auto reservedMember = &SocketMembers::reserved;
    static constexpr auto portMember = &SocketMembers::port;
    static constexpr auto bindAddressMember = &SocketMembers::bindAddress;
    static constexpr auto interfaceRequestMember = &SocketMembers::interfaceRequest;
    static constexpr auto addressLengthMember = &SocketMembers::addressLength;
    static constexpr auto readSetMember = &SocketMembers::readSet;
    static constexpr auto initializedMember = &SocketMembers::initialized;
    static constexpr auto pollingMember = &SocketMembers::polling;
    static constexpr auto pollTimeoutMember = &SocketMembers::pollTimeout;
    static constexpr auto socketDescriptorMember = &SocketMembers::socketDescriptor;
    static constexpr auto connectedMember = &SocketMembers::connected;
    static constexpr auto filtersMember = &SocketMembers::filters;
    static constexpr auto retryCountMember = &SocketMembers::retryCount;
    static constexpr auto retryDelayMember = &SocketMembers::retryDelay;
    static constexpr auto lastErrorMember = &SocketMembers::lastError;
    static constexpr auto lastErrnoMember = &SocketMembers::lastErrno;
    static constexpr auto debugSectionMember = &SocketMembers::debugSection;
};

using Controller = ControllerReference;
using Socket = SocketReference;

}  // namespace

TEST(CanLayout_pure, members_of_a_message_stand_in_their_order) {
    EXPECT_EQ(offset(&ZRCANMessage::reserved), 0);
    EXPECT_EQ(offset(&ZRCANMessage::id), 4);
    EXPECT_EQ(offset(&ZRCANMessage::length), 8);
    EXPECT_EQ(offset(&ZRCANMessage::data), 12);
    EXPECT_EQ(offset(&ZRCANMessage::timeStamp), 20);
    EXPECT_EQ(sizeof(ZRCANMessage), 24U);
    EXPECT_EQ(alignof(ZRCANMessage), 4U);
}

TEST(CanLayout_pure, members_of_a_message_have_their_types) {
    EXPECT_TRUE((std::is_same_v<decltype(ZRCANMessage::reserved), std::uint32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(ZRCANMessage::id), std::uint32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(ZRCANMessage::length), std::uint32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(ZRCANMessage::data), std::uint8_t[8]>));
    EXPECT_TRUE((std::is_same_v<decltype(ZRCANMessage::timeStamp), std::uint32_t>));
    EXPECT_TRUE(std::is_trivial_v<ZRCANMessage>);
    EXPECT_TRUE(std::is_standard_layout_v<ZRCANMessage>);
}

TEST(CanLayout_pure, an_interface_to_controllers_holds_nothing) {
    EXPECT_EQ(sizeof(ZR::ZRCAN), sizeof(void*));
    EXPECT_TRUE(std::is_abstract_v<ZR::ZRCAN>);
    EXPECT_TRUE(std::has_virtual_destructor_v<ZR::ZRCAN>);
}

TEST(CanLayout_pure, members_of_a_controller_stand_in_their_order) {
    using Members = ControllerMembers;
    EXPECT_EQ(offset(Members::nameMember), offset(&Controller::name));
    EXPECT_EQ(offset(Members::presentMember), offset(&Controller::present));
    EXPECT_EQ(offset(Members::baudrateSetMember), offset(&Controller::baudrateSet));
    EXPECT_EQ(sizeof(CANLibsocketcan), sizeof(Controller));
    EXPECT_EQ(alignof(CANLibsocketcan), alignof(Controller));
}

TEST(CanLayout_pure, an_end_point_holds_one_word_of_32_bits_besides_its_table) {
    EXPECT_EQ(offset(SocketMembers::reservedMember), static_cast<std::ptrdiff_t>(sizeof(void*)));
    EXPECT_EQ(sizeof(ZR::ZREndPoint), sizeof(EndPointReference));
    EXPECT_EQ(sizeof(ZR::ZRCANRaw), sizeof(EndPointReference));
    EXPECT_TRUE(std::is_abstract_v<ZR::ZRCANRaw>);
    EXPECT_TRUE((std::is_base_of_v<ZR::ZREndPoint, ZR::ZRCANRaw>));
}

TEST(CanLayout_pure, members_of_a_socket_stand_in_their_order) {
    using Members = SocketMembers;
    EXPECT_EQ(offset(Members::portMember), offset(&Socket::port));
    EXPECT_EQ(offset(Members::bindAddressMember), offset(&Socket::bindAddress));
    EXPECT_EQ(offset(Members::interfaceRequestMember), offset(&Socket::interfaceRequest));
    EXPECT_EQ(offset(Members::addressLengthMember), offset(&Socket::addressLength));
    EXPECT_EQ(offset(Members::readSetMember), offset(&Socket::readSet));
    EXPECT_EQ(offset(Members::initializedMember), offset(&Socket::initialized));
    EXPECT_EQ(offset(Members::pollingMember), offset(&Socket::polling));
    EXPECT_EQ(offset(Members::pollTimeoutMember), offset(&Socket::pollTimeout));
    EXPECT_EQ(offset(Members::socketDescriptorMember), offset(&Socket::socketDescriptor));
    EXPECT_EQ(offset(Members::connectedMember), offset(&Socket::connected));
    EXPECT_EQ(offset(Members::filtersMember), offset(&Socket::filters));
    EXPECT_EQ(offset(Members::retryCountMember), offset(&Socket::retryCount));
    EXPECT_EQ(offset(Members::retryDelayMember), offset(&Socket::retryDelay));
    EXPECT_EQ(offset(Members::lastErrorMember), offset(&Socket::lastError));
    EXPECT_EQ(offset(Members::lastErrnoMember), offset(&Socket::lastErrno));
    EXPECT_EQ(sizeof(CANSocket), sizeof(Socket));
    EXPECT_EQ(alignof(CANSocket), alignof(Socket));
}

TEST(CanLayout_pure, members_of_a_socket_stand_where_64_bit_programs_expect_them) {
    if (sizeof(void*) != 8)
        GTEST_SKIP() << "not a 64 bit machine";
    using Members = SocketMembers;
    EXPECT_EQ(offset(Members::portMember), 12);
    EXPECT_EQ(offset(Members::bindAddressMember), 16);
    EXPECT_EQ(offset(Members::interfaceRequestMember), 40);
    EXPECT_EQ(offset(Members::addressLengthMember), 80);
    EXPECT_EQ(offset(Members::readSetMember), 88);
    EXPECT_EQ(offset(Members::initializedMember), 216);
    EXPECT_EQ(offset(Members::pollingMember), 217);
    EXPECT_EQ(offset(Members::pollTimeoutMember), 220);
    EXPECT_EQ(offset(Members::socketDescriptorMember), 224);
    EXPECT_EQ(offset(Members::connectedMember), 228);
    EXPECT_EQ(offset(Members::filtersMember), 232);
    EXPECT_EQ(offset(Members::retryCountMember), 256);
    EXPECT_EQ(offset(Members::lastErrnoMember), 268);
    EXPECT_EQ(sizeof(CANSocket), 272U);
}

TEST(CanLayout_pure, members_of_a_socket_have_their_types) {
    using Members = SocketMembers;
    EXPECT_TRUE((std::is_same_v<decltype(Members::portMember), std::uint32_t CANSocket::*const>));
    EXPECT_TRUE(
        (std::is_same_v<decltype(Members::pollTimeoutMember), std::uint32_t CANSocket::*const>));
    EXPECT_TRUE((std::is_same_v<decltype(Members::lastErrnoMember), int CANSocket::*const>));
    EXPECT_TRUE((std::is_same_v<decltype(Members::debugSectionMember), unsigned int* const>));
    EXPECT_TRUE(
        (std::is_same_v<decltype(ControllerMembers::debugSectionMember), unsigned int* const>));
    EXPECT_TRUE((std::is_same_v<decltype(ZR::ZRCANRaw::hardwareInterfaceType), int>));
}

TEST(CanLayout_pure, a_socket_has_one_owner_of_its_descriptor) {
    EXPECT_TRUE(std::is_default_constructible_v<CANSocket>);
    EXPECT_FALSE(std::is_copy_constructible_v<CANSocket>);
    EXPECT_FALSE(std::is_copy_assignable_v<CANSocket>);
    EXPECT_TRUE(std::has_virtual_destructor_v<ZR::ZREndPoint>);
    EXPECT_FALSE(std::is_final_v<CANSocket>);
}

TEST(CanLayout_pure, operations_of_a_controller_have_the_slots_behind_the_destructor) {
    EXPECT_EQ(slot(&ZR::ZRCAN::setBaudrate), 2);
    EXPECT_EQ(slot(&ZR::ZRCAN::getBaudrate), 3);
}

TEST(CanLayout_pure, operations_of_an_end_point_have_the_slots_behind_the_destructor) {
    EXPECT_EQ(slot(&ZR::ZREndPoint::getReadEndPointID), 2);
    EXPECT_EQ(slot(&ZR::ZREndPoint::getWriteEndPointID), 3);
    EXPECT_EQ(slot(&ZR::ZREndPoint::isConnected), 4);
    EXPECT_EQ(slot(&ZR::ZREndPoint::reconnect), 5);
}

TEST(CanLayout_pure, operations_of_a_raw_end_point_have_the_slots_behind_an_end_points) {
    using ZR::ZRCANRaw;
    using InitializeWithRate = unsigned int (ZRCANRaw::*)(unsigned int, unsigned int, const char*);
    using Initialize = unsigned int (ZRCANRaw::*)(unsigned int);
    EXPECT_EQ(slot(static_cast<InitializeWithRate>(&ZRCANRaw::initialize)), 6);
    EXPECT_EQ(slot(static_cast<Initialize>(&ZRCANRaw::initialize)), 7);
    EXPECT_EQ(slot(&ZRCANRaw::send), 8);
    EXPECT_EQ(slot(&ZRCANRaw::receive), 9);
    EXPECT_EQ(slot(&ZRCANRaw::setPolling), 10);
    EXPECT_EQ(slot(&ZRCANRaw::addIDFilter), 11);
}
