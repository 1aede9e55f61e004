#include "tests/hardware/netlink/driver_connection_substitute.h"

#include <cstring>

#include "hardware/netlink/event_interface.h"

namespace ZR::test {

int DriverConnection::socket = -1;
int DriverConnection::familyId = -1;
std::vector<std::string> DriverConnection::names;
int DriverConnection::familyIdBefore = 4711;

}  // namespace ZR::test

using ZR::test::DriverConnection;

int event_if_connect(const char* familyName, int* familyId, char* groupName, int* groupId) {
    DriverConnection::names.emplace_back(familyName);
    DriverConnection::familyIdBefore = *familyId;
    *familyId = DriverConnection::familyId;
    *groupId = 9;
    // The longest name that an answer can hold.
    std::memset(groupName, 'x', 216);
    groupName[216] = '\0';
    return DriverConnection::socket;
}
