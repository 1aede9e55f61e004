#include "caller_tty.h"

#include <termios.h>
#include <unistd.h>

enum { ESCAPE_KEY = 0x1d, ESCAPE_COUNT = 3 };

static struct termios before;
static int changed;

void tty_make_raw(void) {
    if (tcgetattr(STDIN_FILENO, &before) != 0)
        return;
    struct termios raw = before;
    cfmakeraw(&raw);
    changed = 1;
    tcsetattr(STDIN_FILENO, TCSADRAIN, &raw);
}

void tty_restore(void) {
    if (changed)
        tcsetattr(STDIN_FILENO, TCSADRAIN, &before);
    changed = 0;
}

int tty_is_in_background(void) {
    return isatty(STDIN_FILENO) && tcgetpgrp(STDIN_FILENO) != getpgrp();
}

int tty_escape_typed(const char* keys, size_t length) {
    static int seen;
    for (size_t i = 0; i < length; ++i) {
        seen = keys[i] == ESCAPE_KEY ? seen + 1 : 0;
        if (seen == ESCAPE_COUNT)
            return 1;
    }
    return 0;
}
