// What loading and unloading the hardware library does. This program is not linked with it.

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "common/zrapi_common/zr_debug.h"
#include "tests/public_api/loaded_library.h"
#include "tests/support/private_root.h"

namespace {

using ZR::test::isMapped;
using ZR::test::Library;
using ZR::test::videoInput;

constexpr char ignitionPathSymbol[] = "_ZN2ZR13ZRInputOutput17ignitionInputPathB5cxx11E";
constexpr char canSectionSymbol[] = "_ZN2ZR5ZRCAN12debugSectionE";
constexpr char canRawSectionSymbol[] = "_ZN2ZR8ZRCANRaw12debugSectionE";
constexpr char canInterfaceTypeSymbol[] = "_ZN2ZR8ZRCANRaw21hardwareInterfaceTypeE";
constexpr char inputOutputSectionSymbol[] = "_ZN2ZR13ZRInputOutput12debugSectionE";
constexpr char dimmableSectionSymbol[] = "_ZN2ZR10ZRDimmable12debugSectionE";
constexpr char dimmableInstanceSymbol[] = "_ZN2ZR10ZRDimmable11getInstanceEv";

constexpr unsigned int firstHandle = 4711;

#ifdef ZR_INSTRUMENTED
constexpr bool isInstrumented = true;
#else
constexpr bool isInstrumented = false;
#endif

std::vector<std::string>& registeredSections() {
    static std::vector<std::string> names;
    return names;
}

const void* watchedMemory = nullptr;
bool watchedMemoryIsFree = false;

void freeMemory(void* memory) {
    if (memory != nullptr && memory == watchedMemory)
        watchedMemoryIsFree = true;
    std::free(memory);
}

}  // namespace

// Stand in for the platform library's, as the program comes first in the search for a name.
unsigned int ZR::ZRDebug::insertNewDebugSection(const std::string& name) {
    registeredSections().push_back(name);
    return firstHandle + static_cast<unsigned int>(registeredSections().size()) - 1;
}

void* operator new(std::size_t size) {
    void* const memory = std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept {
    freeMemory(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    freeMemory(memory);
}

namespace {

int openDescriptors() {
    int count = 0;
    for (int descriptor = 0; descriptor < 256; ++descriptor)
        if (::fcntl(descriptor, F_GETFD) >= 0)
            ++count;
    return count;
}

}  // namespace

TEST(LibraryLoading_pure, loading_registers_the_sections_and_stores_their_handles) {
    const Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    std::vector<std::string> sections = registeredSections();
    ASSERT_EQ(sections.size(), 4U);
    const auto handleOf = [&sections](const char* name) {
        const auto found = std::find(sections.begin(), sections.end(), name);
        return firstHandle + static_cast<unsigned int>(found - sections.begin());
    };
    EXPECT_EQ(*library.symbol<unsigned int>(canSectionSymbol), handleOf("zr_can"));
    EXPECT_EQ(*library.symbol<unsigned int>(canRawSectionSymbol), handleOf("zr_can_raw"));
    EXPECT_EQ(*library.symbol<unsigned int>(inputOutputSectionSymbol), handleOf("zr_io"));
    EXPECT_EQ(*library.symbol<unsigned int>(dimmableSectionSymbol), handleOf("zr_dimmable"));
    std::sort(sections.begin(), sections.end());
    EXPECT_EQ(sections, (std::vector<std::string>{"zr_can", "zr_can_raw", "zr_dimmable", "zr_io"}));
}

TEST(LibraryLoading_pure, the_type_of_can_hardware_is_0_after_loading) {
    const Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    EXPECT_EQ(*library.symbol<int>(canInterfaceTypeSymbol), 0);
}

TEST(LibraryLoading_pure, the_ignition_path_is_empty_after_loading) {
    const Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    EXPECT_EQ(*library.symbol<std::string>(ignitionPathSymbol), "");
}

TEST(LibraryLoading_pure, there_are_no_video_inputs_after_loading) {
    const Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    const auto* const instances = library.symbol<std::map<std::string, std::unique_ptr<int>>>(
        videoInput("9instancesB5cxx11E"));
    ASSERT_NE(instances, nullptr);
    EXPECT_TRUE(instances->empty());
}

TEST(LibraryLoading_pure, no_capture_device_is_known_after_loading) {
    const Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    for (const char* const name : {"12videoDevicesB5cxx11E", "15videoSubDevicesB5cxx11E"}) {
        const auto* const paths = library.symbol<std::string>(videoInput(name));
        ASSERT_NE(paths, nullptr) << name;
        EXPECT_EQ(paths[0] + paths[1] + paths[2], "") << name;
    }
    for (const char* const name : {"15fileDescriptorsE", "18fileDescriptorsSubE"}) {
        const auto* const descriptors = library.symbol<int>(videoInput(name));
        ASSERT_NE(descriptors, nullptr) << name;
        EXPECT_EQ(std::vector<int>(descriptors, descriptors + 3), std::vector<int>(3, -1)) << name;
    }
    for (const char* const name : {"6twNameB5cxx11E", "7advNameB5cxx11E"})
        EXPECT_EQ(*library.symbol<std::string>(videoInput(name)), "") << name;
    EXPECT_EQ(*library.symbol<void*>(videoInput("11mediaDeviceE")), nullptr);
}

TEST(LibraryLoading_pure, discovery_is_pending_and_standards_have_their_sizes_after_loading) {
    const Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    EXPECT_TRUE(*library.symbol<bool>(videoInput("19initialSetupPendingE")));
    EXPECT_FALSE(*library.symbol<bool>(videoInput("17runningOnQuadCoreE")));
    EXPECT_EQ(*library.symbol<std::string>(videoInput("7palSizeB5cxx11E")), "720x576");
    EXPECT_EQ(*library.symbol<std::string>(videoInput("8ntscSizeB5cxx11E")), "720x480");
    const auto* const last = library.symbol<int>(videoInput("15lastSetStandardE"));
    EXPECT_EQ(std::vector<int>(last, last + 3), std::vector<int>(3, 2));
}

TEST(LibraryLoading, loading_opens_and_prints_nothing) {
    ZR::test::makeFile("/sys/class/backlight/backlight/brightness", "128\n");
    const int before = openDescriptors();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const Library library;
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    EXPECT_EQ(openDescriptors(), before);
}

TEST(LibraryLoading_pure, unloading_takes_the_library_out_of_the_process) {
    if (isInstrumented)
        GTEST_SKIP() << "instrumentation keeps libraries in the process";
    Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    ASSERT_TRUE(isMapped());
    EXPECT_TRUE(library.unload());
    EXPECT_EQ(::dlopen(ZR_HARDWARE_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
    EXPECT_FALSE(isMapped());
}

TEST(LibraryLoading_pure, the_library_can_be_loaded_again) {
    if (isInstrumented)
        GTEST_SKIP() << "instrumentation keeps libraries in the process";
    Library first;
    ASSERT_TRUE(first.unload());
    const Library second;
    ASSERT_TRUE(second.isLoaded()) << ::dlerror();
    EXPECT_EQ(registeredSections().size(), 8U);
}

TEST(LibraryLoading_pure, unloading_destroys_the_ignition_path) {
    if (isInstrumented)
        GTEST_SKIP() << "instrumentation keeps libraries in the process";
    Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    auto* const path = library.symbol<std::string>(ignitionPathSymbol);
    *path = "/sys/class/regulator/a_name_that_does_not_fit_into_the_object_itself/name";
    watchedMemory = path->data();
    ASSERT_TRUE(library.unload());
    EXPECT_TRUE(watchedMemoryIsFree);
}

TEST(LibraryLoading_pure, unloading_destroys_the_paths_of_the_capture_devices) {
    if (isInstrumented)
        GTEST_SKIP() << "instrumentation keeps libraries in the process";
    Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    auto* const paths = library.symbol<std::string>(videoInput("12videoDevicesB5cxx11E"));
    paths[2] = "/dev/a_name_that_does_not_fit_into_the_object_itself";
    watchedMemory = paths[2].data();
    ASSERT_TRUE(library.unload());
    EXPECT_TRUE(watchedMemoryIsFree);
}

TEST(LibraryLoading, unloading_destroys_the_dimmable_devices_and_closes_their_files) {
    if (isInstrumented)
        GTEST_SKIP() << "instrumentation keeps libraries in the process";
    ZR::test::makeFile("/sys/class/backlight/backlight/brightness", "128\n");
    ZR::test::makeFile("/sys/class/leds/user:rgb/brightness", "0\n");
    const int before = openDescriptors();
    Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    library.symbol<void*()>(dimmableInstanceSymbol)();
    EXPECT_EQ(openDescriptors(), before + 2);
    ASSERT_TRUE(library.unload());
    EXPECT_EQ(openDescriptors(), before);
}

TEST(LibraryLoading_pure, nothing_of_the_video_inputs_runs_after_loading) {
    const Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    for (const char* const flag : {"11gstInitDoneE", "4quitE", "17busThreadLaunchedE"})
        EXPECT_FALSE(*library.symbol<bool>(videoInput(flag))) << flag;
    EXPECT_EQ(*library.symbol<void*>("_ZN2ZR21ZRVideoInputInterface10mainWindowE"), nullptr);
}

/// A thread that sleeps in code that is gone takes the process with it.
TEST(LibraryLoading, a_library_that_has_started_threads_stays_in_the_process) {
    Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    auto* const getInstance = library.symbol<void*(const std::string&)>(
        videoInput("11getInstanceERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"));
    ASSERT_NE(getInstance, nullptr);
    ASSERT_NE(getInstance("camera"), nullptr);
    auto* const isReady = library.symbol<const volatile bool>(videoInput("11gstInitDoneE"));
    EXPECT_TRUE(library.unload());
    EXPECT_TRUE(isMapped());
    // Its thread wakes up after a second.
    for (int i = 0; i < 20000 && !*isReady; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_TRUE(*isReady);
}
