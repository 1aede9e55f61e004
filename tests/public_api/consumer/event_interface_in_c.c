/* Uses the interface to drivers' notifications from C, as an application without C++ does. */

#include <hardware/netlink/event_interface.h>
#include <stddef.h>
#include <string.h>

int eventInterfaceWorksInC(void);

/* 1 when the functions answer as they should on a machine without drivers. */
int eventInterfaceWorksInC(void) {
    struct {
        struct nlmsghdr header;
        unsigned char generic[4];
        struct nlattr attribute;
        unsigned char payload[4];
    } message;
    int familyId = 0;
    int groupId = 0;
    char groupName[16];
    const int connection = event_if_connect("no_such_family", &familyId, groupName, &groupId);

    if (connection != -1) {
        event_if_disconnect(connection);
        return 0;
    }
    memset(&message, 0, sizeof message);
    message.header.nlmsg_len = sizeof message;
    message.attribute.nla_len = 8;
    return attr_count(&message.header) == 1 && attr_get(&message.header, 0) == &message.attribute &&
           attr_get(&message.header, 1) == NULL && event_if_waitevent(-1, familyId, 1, 0, 0) == -1;
}
