// The virtual tables of the video inputs in the loaded hardware library.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/public_api/loaded_library.h"

namespace {

using ZR::test::Library;

/// The operations of the interface, without its destructors: what their mangled names end in.
const std::vector<std::string> operations{"4initEv",
                                          "16getMirrorSettingEt",
                                          "18getRotationSettingEt",
                                          "9getHeightEt",
                                          "8getWidthEt",
                                          "12getXPositionEt",
                                          "12getYPositionEt",
                                          "13setBrightnessEti",
                                          "11setContrastEti",
                                          "6setHueEti",
                                          "9setMirrorEtNS_20ZRVideoMirrorSettingE",
                                          "11setRotationEtNS_10ZRRotationE",
                                          "11setPositionEtii",
                                          "13setSaturationEti",
                                          "7setSizeEtii",
                                          "5startEt",
                                          "4stopEt",
                                          "9isRunningEt",
                                          "19setCurrentInterfaceEi",
                                          "19getCurrentInterfaceEv",
                                          "13isInitializedEv",
                                          "20handleQueuedCommandsEv"};

std::string symbolOf(const std::string& prefix, const std::string& operation) {
    const bool isConst = operation == "19getCurrentInterfaceEv";
    return "_Z" + prefix + (isConst ? "NK" : "N") + "2ZR21ZRGstreamerVideoInput" + operation;
}

/// The entries of the table, with the two in front of each part of it.
class VideoSlotOrder_pure : public testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(table_, nullptr) << ::dlerror(); }

    void expectEntry(std::size_t index, const std::string& symbol) const {
        const void* const wanted = library_.symbol<void>(symbol);
        EXPECT_NE(wanted, nullptr) << symbol << " is not exported";
        EXPECT_EQ(table_[index], wanted) << symbol;
    }

    std::ptrdiff_t number(std::size_t index) const {
        return reinterpret_cast<std::ptrdiff_t>(table_[index]);
    }

    Library library_;
    void* const* table_ = library_.symbol<void* const>("_ZTVN2ZR21ZRGstreamerVideoInputE");
};

constexpr std::size_t objectPart = 2;                    // behind the offset and the type
constexpr std::size_t ownPart = objectPart + 3 + 2 + 7;  // QObject's three, destructors, the rest

TEST_F(VideoSlotOrder_pure, of_the_class_begins_with_the_three_of_its_meta_object) {
    expectEntry(objectPart, "_ZNK2ZR21ZRGstreamerVideoInput10metaObjectEv");
    expectEntry(objectPart + 1, "_ZN2ZR21ZRGstreamerVideoInput11qt_metacastEPKc");
    expectEntry(objectPart + 2,
                "_ZN2ZR21ZRGstreamerVideoInput11qt_metacallEN11QMetaObject4CallEiPPv");
}

TEST_F(VideoSlotOrder_pure, of_the_class_goes_on_with_the_destructors) {
    expectEntry(objectPart + 3, "_ZN2ZR21ZRGstreamerVideoInputD1Ev");
    expectEntry(objectPart + 4, "_ZN2ZR21ZRGstreamerVideoInputD0Ev");
}

TEST_F(VideoSlotOrder_pure, of_the_class_has_the_objects_own_operations_unchanged) {
    const char* const unchanged[] = {"5eventEP6QEvent",
                                     "11eventFilterEPS_P6QEvent",
                                     "10timerEventEP11QTimerEvent",
                                     "10childEventEP11QChildEvent",
                                     "11customEventEP6QEvent",
                                     "13connectNotifyERK11QMetaMethod",
                                     "16disconnectNotifyERK11QMetaMethod"};
    std::size_t index = objectPart + 5;
    for (const char* const each : unchanged)
        expectEntry(index++, std::string("_ZN7QObject") + each);
    EXPECT_EQ(index, ownPart);
}

TEST_F(VideoSlotOrder_pure, of_the_class_ends_with_the_interfaces_operations_in_order) {
    for (std::size_t i = 0; i < operations.size(); ++i)
        expectEntry(ownPart + i, symbolOf("", operations[i]));
}

TEST_F(VideoSlotOrder_pure, of_the_interface_is_the_second_part_with_its_destructors_first) {
    const std::size_t second = ownPart + operations.size();
    const std::ptrdiff_t offset = -2 * static_cast<std::ptrdiff_t>(sizeof(void*));
    EXPECT_EQ(number(second), offset) << "the interface lies behind QObject";
    const std::string thunk = "Thn" + std::to_string(-offset) + '_';
    const std::size_t slots = second + 2;
    expectEntry(slots, symbolOf(thunk, "D1Ev"));
    expectEntry(slots + 1, symbolOf(thunk, "D0Ev"));
    for (std::size_t i = 0; i < operations.size(); ++i)
        expectEntry(slots + 2 + i, symbolOf(thunk, operations[i]));
    EXPECT_EQ(ZR::test::slots(library_, "_ZTVN2ZR21ZRGstreamerVideoInputE").size() + 2,
              slots + 2 + operations.size());
}

/// Nobody can have an object of it: the compiler leaves the slots of its destructors empty.
TEST_F(VideoSlotOrder_pure, of_the_interface_itself_has_pure_operations_behind_its_destructors) {
    const std::size_t count = ZR::test::slots(library_, "_ZTVN2ZR21ZRVideoInputInterfaceE").size();
    ASSERT_EQ(count, 2 + operations.size());
    const auto* const table = library_.symbol<void* const>("_ZTVN2ZR21ZRVideoInputInterfaceE");
    const void* const pure = library_.symbol<void>("__cxa_pure_virtual");
    ASSERT_NE(pure, nullptr);
    for (std::size_t i = 4; i < 2 + count; ++i)
        EXPECT_EQ(table[i], pure) << i;
}

TEST_F(VideoSlotOrder_pure, goes_with_static_members_that_are_exported) {
    for (const char* const member : {"9instancesB5cxx11E", "12gstBusThreadE", "11gstInitDoneE",
                                     "4quitE", "17busThreadLaunchedE", "15fileDescriptorsE",
                                     "18fileDescriptorsSubE", "16staticMetaObjectE"})
        EXPECT_NE(library_.symbol<void>(ZR::test::videoInput(member)), nullptr) << member;
    EXPECT_NE(library_.symbol<void>("_ZN2ZR21ZRVideoInputInterface10mainWindowE"), nullptr);
}

}  // namespace
