#include "tests/public_api/loaded_library.h"

#include <cxxabi.h>
#include <gtest/gtest.h>
#include <link.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace ZR::test {
namespace {

std::string demangled(const char* name) {
    int status = -1;
    const std::unique_ptr<char, void (*)(void*)> text(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), std::free);
    return status == 0 ? text.get() : name;
}

}  // namespace

std::string videoInput(const std::string& member) {
    return "_ZN2ZR21ZRGstreamerVideoInput" + member;
}

bool isMapped() {
    const auto isHardware = [](dl_phdr_info* object, std::size_t /*size*/, void* /*data*/) {
        return std::strstr(object->dlpi_name, "libZRAPI_Hardware") != nullptr ? 1 : 0;
    };
    return ::dl_iterate_phdr(isHardware, nullptr) != 0;
}

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

void expectSlots(const char* tableSymbol, const std::vector<const char*>& expected) {
    const Library library;
    ASSERT_TRUE(library.isLoaded()) << ::dlerror();
    const auto* const table = library.symbol<void* const>(tableSymbol);
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(slots(library, tableSymbol).size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(table[i + 2], library.symbol<void>(expected[i])) << demangled(expected[i]);
}

}  // namespace ZR::test
