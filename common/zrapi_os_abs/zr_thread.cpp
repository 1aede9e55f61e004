#include "common/zrapi_os_abs/zr_thread.h"

#include <pthread.h>

#include <cerrno>
#include <new>
#include <system_error>

namespace ZR {
namespace {

// TASK_COMM_LEN without the NUL; pthread_setname_np refuses a longer name.
constexpr std::string::size_type longestName = 15;

/// What the new thread does: the name comes first, so that it is there before the entry runs.
void runNamed(void (*entry)(void*), void* argument, const std::string& name) {
    if (!name.empty())
        (void)::pthread_setname_np(::pthread_self(), name.c_str());
    entry(argument);
}

}  // namespace

ZRThread::~ZRThread() {
    if (thread_.joinable())
        thread_.detach();
}

int ZRThread::startThread(void (*entry)(void*), void* argument) {
    if (entry == nullptr)
        return EINVAL;
    if (thread_.joinable())
        return EBUSY;
    try {
        thread_ = std::thread(runNamed, entry, argument, name_);
    } catch (const std::system_error& error) {
        return error.code().value();
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
    return 0;
}

int ZRThread::setThreadName(const std::string& name) {
    name_ = name.substr(0, longestName);
    if (!thread_.joinable())
        return 0;
    return ::pthread_setname_np(thread_.native_handle(), name_.c_str());
}

int ZRThread::join() {
    if (!thread_.joinable())
        return 0;
    if (thread_.get_id() == std::this_thread::get_id())
        return EDEADLK;
    thread_.join();
    return 0;
}

}  // namespace ZR
