#include "tests/support/substitutes/mutex_substitute.h"

#include <dlfcn.h>
#include <pthread.h>

#include <cerrno>

namespace ZR::test {

const void* MutexSubstitute::refused = nullptr;
bool MutexSubstitute::recording = false;
std::vector<MutexCall> MutexSubstitute::calls;

namespace {

using MutexFunction = int (*)(pthread_mutex_t*);

MutexFunction realFunction(const char* name) {
    return reinterpret_cast<MutexFunction>(::dlsym(RTLD_NEXT, name));
}

void record(MutexOperation operation, const void* mutex) {
    if (!MutexSubstitute::recording)
        return;
    // The log's own memory may be behind a lock.
    MutexSubstitute::recording = false;
    MutexSubstitute::calls.push_back({operation, mutex});
    MutexSubstitute::recording = true;
}

}  // namespace
}  // namespace ZR::test

extern "C" {

int pthread_mutex_lock(pthread_mutex_t* mutex) {
    // Looked up by hand: a static with an initialiser would lock for its guard.
    static ZR::test::MutexFunction real = nullptr;
    if (real == nullptr)
        real = ZR::test::realFunction("pthread_mutex_lock");
    if (mutex == ZR::test::MutexSubstitute::refused)
        return EINVAL;
    ZR::test::record(ZR::test::MutexOperation::Lock, mutex);
    return real(mutex);
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) {
    static ZR::test::MutexFunction real = nullptr;
    if (real == nullptr)
        real = ZR::test::realFunction("pthread_mutex_unlock");
    ZR::test::record(ZR::test::MutexOperation::Unlock, mutex);
    return real(mutex);
}

}  // extern "C"
