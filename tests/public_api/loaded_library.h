#pragma once

#include <dlfcn.h>

#include <string>
#include <utility>
#include <vector>

/// The hardware library in programs that are not linked with it.

namespace ZR::test {

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

/// The symbol of a member of the video inputs' class, given the member's mangled end.
std::string videoInput(const std::string& member);

/// Whether the hardware library is in the process.
bool isMapped();

/// The operations in the slots of a class's virtual table.
std::vector<std::string> slots(const Library& library, const char* tableSymbol);

/// Which operations have the slots of a virtual table. By address: the optimiser gives operations that
/// do the same one body with several names.
void expectSlots(const char* tableSymbol, const std::vector<const char*>& expected);

}  // namespace ZR::test
