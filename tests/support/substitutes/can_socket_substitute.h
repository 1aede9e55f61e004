#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

/// Gives a program CAN sockets on a kernel that has none; link `zrapi_substitute_can_socket`.
///
/// A CAN socket becomes a local datagram socket, and each call on it one call of the same name on
/// that. Calls on other descriptors are passed on as they are and leave no trace.

namespace ZR::test {

/// What a call on a CAN socket answers instead of being made.
struct Answer {
    long result;
    int error;  ///< stored into errno when the result is negative
};

struct CanSocketSubstitute {
    /// The index of each interface; at first there are none.
    static std::map<std::string, int> interfaces;

    /// Each call on a CAN socket, or on -1, with what it was given. Sockets are called s1, s2, ...
    /// in the order in which they were made; numbers are decimal, memory is hexadecimal:
    /// "socket 29 524291 1", "bind s1 1d000000... 24".
    static std::vector<std::string> calls;

    /// Whether calls are logged; a log needs the heap.
    static bool recording;

    /// The lowest number that a socket may get; 0 for any.
    static int lowestDescriptor;

    /// Makes the following calls of @p function on CAN sockets answer this, one after the other.
    static void answer(const std::string& function, const std::vector<Answer>& answers);

    /// Makes a descriptor that the test has made count as a CAN socket.
    static void adopt(int descriptor);

    /// Neither interfaces nor calls nor answers nor names.
    static void reset();
};

/// Memory as the log shows it.
std::string hexadecimal(const void* memory, std::size_t size);

}  // namespace ZR::test
