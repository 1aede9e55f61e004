// What loading and unloading the hardware library does. This program is not linked with it.

#include <cxxabi.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <link.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "common/zrapi_common/zr_debug.h"
#include "tests/support/private_root.h"

namespace {

constexpr char ignitionPathSymbol[] = "_ZN2ZR13ZRInputOutput17ignitionInputPathB5cxx11E";
constexpr char canSectionSymbol[] = "_ZN2ZR5ZRCAN12debugSectionE";
constexpr char canRawSectionSymbol[] = "_ZN2ZR8ZRCANRaw12debugSectionE";
constexpr char canInterfaceTypeSymbol[] = "_ZN2ZR8ZRCANRaw21hardwareInterfaceTypeE";
constexpr char inputOutputSectionSymbol[] = "_ZN2ZR13ZRInputOutput12debugSectionE";
constexpr char dimmableSectionSymbol[] = "_ZN2ZR10ZRDimmable12debugSectionE";
constexpr char readableSymbol[] =
    "_ZN2ZR9ZRNetlink18onEndPointReadableESt10shared_ptrINS_10ZREndPointEEPNS_"
    "17ZREndPointManagerE";
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

/// The hardware library, loaded while this lives.
class Library {
  public:
    Library() : handle_(::dlopen(ZR_HARDWARE_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {}
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() { unload(); }

    bool isLoaded() const { return handle_ != nullptr; }

    bool unload() {
        void* const handle = std::exchange(handle_, nullptr);
        return handle != nullptr && ::dlclose(handle) == 0;
    }

    template <typename Type>
    Type* symbol(const char* name) const {
        return reinterpret_cast<Type*>(::dlsym(handle_, name));
    }

    template <typename Type>
    Type* symbol(const std::string& name) const {
        return symbol<Type>(name.c_str());
    }

  private:
    void* handle_;
};

/// The symbol of a static member of the video inputs' class, given the member's mangled end.
std::string videoInput(const std::string& member) {
    return "_ZN2ZR21ZRGstreamerVideoInput" + member;
}

bool isMapped() {
    const auto isHardware = [](dl_phdr_info* object, std::size_t /*size*/, void* /*data*/) {
        return std::strstr(object->dlpi_name, "libZRAPI_Hardware") != nullptr ? 1 : 0;
    };
    return ::dl_iterate_phdr(isHardware, nullptr) != 0;
}

std::string demangled(const char* name) {
    int status = -1;
    const std::unique_ptr<char, void (*)(void*)> text(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), std::free);
    return status == 0 ? text.get() : name;
}

/// The operations in the slots of a class's virtual table.
std::vector<std::string> slots(const Library& library, const char* tableSymbol) {
    const auto* const table = library.symbol<void* const>(tableSymbol);
    Dl_info info{};
    void* entry = nullptr;
    std::vector<std::string> names;
    if (table == nullptr || ::dladdr1(table, &info, &entry, RTLD_DL_SYMENT) == 0)
        return names;
    // The first two entries are the offset to the top and the type information.
    const std::size_t count = static_cast<const ElfW(Sym)*>(entry)->st_size / sizeof(void*);
    for (std::size_t i = 2; i < count; ++i) {
        Dl_info operation{};
        const bool known = ::dladdr(table[i], &operation) != 0 && operation.dli_sname != nullptr;
        names.push_back(known ? demangled(operation.dli_sname) : "unknown");
    }
    return names;
}

/// Which operations have the slots of a virtual table. By address: the optimiser gives operations that
/// do the same one body with several names.
void expectSlots(const char* tableSymbol, const std::vector<const char*>& expected) {
    const Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    const auto* const table = library.symbol<void* const>(tableSymbol);
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(slots(library, tableSymbol).size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(table[i + 2], library.symbol<void>(expected[i])) << demangled(expected[i]);
}

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
