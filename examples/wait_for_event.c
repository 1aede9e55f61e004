/* Waits for a change of a digital input, in C: wait_for_event SECONDS */

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include <linux/genetlink.h>

#include <hardware/netlink/event_interface.h>

/* The drivers' command and the attributes of their notifications: channel, flags, value. */
enum { eventCommand = 1, attributes = 3 };

/* A message holds 276 bytes, and so no payload is longer. The library copies whatever came. */
union payload {
    uint32_t number;
    char bytes[276];
};

int main(int argc, char** argv) {
    char* rest = NULL;
    const long seconds = argc == 2 ? strtol(argv[1], &rest, 10) : 0;
    char groupName[GENL_NAMSIZ];
    int familyId = 0;
    int groupId = 0;
    int socket = -1;
    time_t end = 0;

    if (seconds <= 0 || *rest != '\0') {
        fputs("usage: wait_for_event SECONDS\n", stderr);
        return 2;
    }
    /* Prints the reason of a failure to standard output by itself. */
    socket = event_if_connect("ZR_DI", &familyId, groupName, &groupId);
    if (socket == -1)
        return 1;
    puts("waiting");
    fflush(stdout);

    /* One wait is shorter than a second; it also ends with a message of another shape. */
    end = time(NULL) + seconds;
    while (time(NULL) < end) {
        union payload channel = {0}, flags = {0}, value = {0};
        const int result = event_if_waitevent(socket, familyId, eventCommand, 900000, attributes,
                                              &channel, &flags, &value);
        if (result < 0)
            break;
        if (result == 0)
            continue;
        printf("digital input %u is %s\n", channel.number + 1, value.number != 0 ? "on" : "off");
        event_if_disconnect(socket);
        return 0;
    }
    event_if_disconnect(socket);
    fputs("no event came\n", stderr);
    return 1;
}
