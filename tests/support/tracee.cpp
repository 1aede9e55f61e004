#include "tests/support/tracee.h"

#include <elf.h>
#include <sys/ptrace.h>
#include <sys/uio.h>
#include <sys/user.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace ZR::test {
namespace {

using CallInfo = struct __ptrace_syscall_info;  // NOLINT(bugprone-reserved-identifier): its name

CallInfo callInfo(pid_t process) {
    CallInfo info{};
    if (::ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof info, &info) <= 0)
        throw std::runtime_error(std::string("PTRACE_GET_SYSCALL_INFO: ") + std::strerror(errno));
    return info;
}

#if defined(__x86_64__) || defined(__aarch64__)

struct user_regs_struct registersOf(pid_t process) {
    struct user_regs_struct registers {};
    iovec data{&registers, sizeof registers};
    if (::ptrace(PTRACE_GETREGSET, process, NT_PRSTATUS, &data) != 0)
        throw std::runtime_error(std::string("PTRACE_GETREGSET: ") + std::strerror(errno));
    return registers;
}

void setRegisters(pid_t process, struct user_regs_struct registers) {
    iovec data{&registers, sizeof registers};
    if (::ptrace(PTRACE_SETREGSET, process, NT_PRSTATUS, &data) != 0)
        throw std::runtime_error(std::string("PTRACE_SETREGSET: ") + std::strerror(errno));
}

#endif

}  // namespace

CallEntry callAtEntry(pid_t process) {
    const CallInfo info = callInfo(process);
    CallEntry entry{static_cast<long>(info.entry.nr), {}};
    std::copy(std::begin(info.entry.args), std::end(info.entry.args), entry.arguments.begin());
    return entry;
}

std::int64_t resultAtExit(pid_t process) {
    return callInfo(process).exit.rval;
}

#if defined(__x86_64__)

bool knowsRegisters() {
    return true;
}

void cancelCall(pid_t process) {
    struct user_regs_struct registers = registersOf(process);
    registers.orig_rax = static_cast<unsigned long long>(-1);
    setRegisters(process, registers);
}

void setCount(pid_t process, std::uint64_t count) {
    struct user_regs_struct registers = registersOf(process);
    registers.rdx = count;
    setRegisters(process, registers);
}

void setResult(pid_t process, std::int64_t result) {
    struct user_regs_struct registers = registersOf(process);
    registers.rax = static_cast<unsigned long long>(result);
    setRegisters(process, registers);
}

#elif defined(__aarch64__)

bool knowsRegisters() {
    return true;
}

void cancelCall(pid_t process) {
    int number = -1;
    iovec data{&number, sizeof number};
    if (::ptrace(PTRACE_SETREGSET, process, NT_ARM_SYSTEM_CALL, &data) != 0)
        throw std::runtime_error(std::string("NT_ARM_SYSTEM_CALL: ") + std::strerror(errno));
}

void setCount(pid_t process, std::uint64_t count) {
    struct user_regs_struct registers = registersOf(process);
    registers.regs[2] = count;
    setRegisters(process, registers);
}

void setResult(pid_t process, std::int64_t result) {
    struct user_regs_struct registers = registersOf(process);
    registers.regs[0] = static_cast<unsigned long long>(result);
    setRegisters(process, registers);
}

#else

bool knowsRegisters() {
    return false;
}

void cancelCall(pid_t /*process*/) {}

void setCount(pid_t /*process*/, std::uint64_t /*count*/) {}

void setResult(pid_t /*process*/, std::int64_t /*result*/) {}

#endif

std::string readMemory(pid_t process, std::uint64_t address, std::size_t size) {
    std::string text;
    while (text.size() < size) {
        errno = 0;
        const long word = ::ptrace(PTRACE_PEEKDATA, process, address + text.size(), nullptr);
        if (word == -1 && errno != 0)
            break;
        text.append(reinterpret_cast<const char*>(&word), sizeof word);
    }
    text.resize(std::min(text.size(), size));
    return text;
}

std::string readText(pid_t process, std::uint64_t address) {
    constexpr std::size_t step = 64;
    constexpr std::size_t longest = 4096;
    std::string text;
    while (text.size() < longest) {
        const std::string part = readMemory(process, address + text.size(), step);
        text += part;
        if (part.size() < step || part.find('\0') != std::string::npos)
            break;
    }
    return text.substr(0, text.find('\0'));
}

}  // namespace ZR::test
