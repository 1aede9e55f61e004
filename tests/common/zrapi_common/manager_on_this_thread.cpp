#include "tests/common/zrapi_common/manager_on_this_thread.h"

#include <dlfcn.h>
#include <pthread.h>

namespace ZR::test {
namespace {

bool puttingOff = false;
std::function<void()> lastPutOff;

}  // namespace

void putOffThreads(bool putOff) {
    puttingOff = putOff;
}

std::function<void()> threadPutOff() {
    return lastPutOff;
}

}  // namespace ZR::test

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*start)(void*), void* argument) noexcept {
    using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    if (!ZR::test::puttingOff) {
        const auto real = reinterpret_cast<Create>(::dlsym(RTLD_NEXT, "pthread_create"));
        return real(thread, attributes, start, argument);
    }
    ZR::test::lastPutOff = [start, argument] { start(argument); };
    *thread = ::pthread_self();
    return 0;
}
