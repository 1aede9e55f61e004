#include "console_tail.h"

#include <errno.h>
#include <string.h>
#include <unistd.h>

#include "frames.h"

enum { KEPT = 8192, LINES_SHOWN = 60 };

static char kept[KEPT];
static size_t kept_length;
static int shown_on = -1;

void console_show(int descriptor) {
    shown_on = descriptor;
}

static void keep(const char* bytes, size_t length) {
    if (length > KEPT) {
        bytes += length - KEPT;
        length = KEPT;
    }
    if (kept_length + length > KEPT) {
        size_t excess = kept_length + length - KEPT;
        memmove(kept, kept + excess, kept_length - excess);
        kept_length -= excess;
    }
    memcpy(kept + kept_length, bytes, length);
    kept_length += length;
}

int console_collect(int descriptor) {
    char bytes[4096];
    for (;;) {
        ssize_t got = read(descriptor, bytes, sizeof bytes);
        if (got == 0)
            return 0;
        if (got < 0)
            return errno == EAGAIN || errno == EINTR;
        keep(bytes, (size_t)got);
        if (shown_on >= 0)
            (void)write_fully(shown_on, bytes, (size_t)got);
    }
}

static size_t start_of_last_lines(void) {
    int lines = 0;
    size_t position = kept_length;
    while (position > 0) {
        if (kept[position - 1] == '\n' && position != kept_length && ++lines == LINES_SHOWN)
            return position;
        --position;
    }
    return 0;
}

void console_print_tail(FILE* stream) {
    if (kept_length == 0) {
        fputs("  (the console is empty)\n", stream);
        return;
    }
    int line_start = 1;
    for (size_t i = start_of_last_lines(); i < kept_length; ++i) {
        char byte = kept[i];
        if (byte != '\n' && byte != '\t' && (unsigned char)byte < ' ')
            continue;
        if (line_start)
            fputs("  ", stream);
        line_start = byte == '\n';
        fputc(byte, stream);
    }
    if (!line_start)
        fputc('\n', stream);
}
