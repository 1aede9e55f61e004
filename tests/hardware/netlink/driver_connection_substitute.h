#pragma once

#include <string>
#include <vector>

/// Takes the place of event_if_connect: no kernel is asked.

namespace ZR::test {

struct DriverConnection {
    static int socket;                      ///< what the next connection gives, -1 a failure
    static int familyId;                    ///< what it leaves as the family's number
    static std::vector<std::string> names;  ///< the families that were connected to
    static int familyIdBefore;              ///< what the last connection found as the number
};

}  // namespace ZR::test
