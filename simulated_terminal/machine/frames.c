#include "frames.h"

#include <errno.h>
#include <string.h>
#include <unistd.h>

int write_fully(int descriptor, const void* bytes, size_t length) {
    const char* next = bytes;
    while (length > 0) {
        ssize_t written = write(descriptor, next, length);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return -1;
        next += written;
        length -= (size_t)written;
    }
    return 0;
}

int send_frame(int descriptor, enum frame_type type, const void* payload, size_t length) {
    /* One write a frame: on an emulated line each write costs more than the copy. */
    char frame[sizeof(struct frame_header) + FRAME_PAYLOAD_MAX];
    struct frame_header header = {type, (uint32_t)length};
    memcpy(frame, &header, sizeof header);
    if (length > FRAME_PAYLOAD_MAX) {
        errno = EMSGSIZE;
        return -1;
    }
    if (length > 0)
        memcpy(frame + sizeof header, payload, length);
    return write_fully(descriptor, frame, sizeof header + length);
}

enum read_result read_frame(struct frame_reader* reader, int descriptor) {
    int in_header = reader->header_filled < sizeof reader->header;
    if (!in_header && reader->payload_filled == reader->header.length) {
        reader->header_filled = 0;
        reader->payload_filled = 0;
        in_header = 1;
    }

    char* target = in_header ? (char*)&reader->header + reader->header_filled
                             : reader->payload + reader->payload_filled;
    size_t wanted = in_header ? sizeof reader->header - reader->header_filled
                              : reader->header.length - reader->payload_filled;
    ssize_t got = read(descriptor, target, wanted);
    if (got == 0)
        return READ_END;
    if (got < 0)
        return errno == EINTR || errno == EAGAIN ? READ_MORE : READ_BROKEN;

    if (in_header) {
        reader->header_filled += (size_t)got;
        if (reader->header_filled < sizeof reader->header)
            return READ_MORE;
        if (reader->header.length > FRAME_PAYLOAD_MAX)
            return READ_BROKEN;
    } else {
        reader->payload_filled += (size_t)got;
    }
    return reader->payload_filled == reader->header.length ? READ_FRAME : READ_MORE;
}
