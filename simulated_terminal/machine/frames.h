/* The language of the one line between the host and the guest.
 *
 * A single stream carries everything, so that an output byte can never be overtaken by the exit
 * status that ends the machine. Each frame is a header and its payload.
 */
#ifndef SIMULATED_TERMINAL_FRAMES_H
#define SIMULATED_TERMINAL_FRAMES_H

#include <stddef.h>
#include <stdint.h>

enum frame_type {
    /* guest to host */
    FRAME_HELLO = 'H',   /* the guest asks for its settings */
    FRAME_STARTED = 'R', /* the command runs; from now on it can take input */
    FRAME_OUTPUT = 'o',  /* bytes of standard output */
    FRAME_ERROR = 'e',   /* bytes of standard error */
    FRAME_CREDIT = 'c',  /* uint32_t: that many more bytes of input are welcome */
    FRAME_STATUS = 's',  /* uint8_t: exit status of the command, the last frame of all */
    FRAME_FAILURE = 'f', /* text: the machine could not be set up, the last frame of all */
    /* host to guest */
    FRAME_SETTINGS = 'S', /* shell text for the guest's init, in pieces; an empty one ends it */
    FRAME_INPUT = 'i',    /* bytes of standard input */
    FRAME_INPUT_END = 'z',
    FRAME_WINDOW = 'w' /* struct winsize */
};

struct frame_header {
    uint32_t type;
    uint32_t length;
};

enum {
    FRAME_PAYLOAD_MAX = 16 * 1024,
    /* Input that may be under way before the command has read any of it. */
    INPUT_WINDOW = 64 * 1024
};

/* Writes all bytes; returns 0, or -1 with errno set. */
int write_fully(int descriptor, const void* bytes, size_t length);

/* Sends one frame of at most FRAME_PAYLOAD_MAX bytes; returns 0, or -1 with errno set. */
int send_frame(int descriptor, enum frame_type type, const void* payload, size_t length);

/* Collects the bytes of one frame from a line that delivers them in pieces. */
struct frame_reader {
    struct frame_header header;
    size_t header_filled;
    size_t payload_filled;
    char payload[FRAME_PAYLOAD_MAX];
};

enum read_result { READ_FRAME, READ_MORE, READ_END, READ_BROKEN };

/* Makes one read; READ_FRAME when the reader holds a whole frame, which the next call drops. */
enum read_result read_frame(struct frame_reader* reader, int descriptor);

#endif
