/* The caller's terminal while the command in the guest is interactive. */
#ifndef SIMULATED_TERMINAL_CALLER_TTY_H
#define SIMULATED_TERMINAL_CALLER_TTY_H

#include <stddef.h>

/* Every key goes to the guest from now on. */
void tty_make_raw(void);

/* Restores what tty_make_raw changed, if it did. */
void tty_restore(void);

/* Is standard input a terminal that belongs to someone else now? Reading it would stop us. */
int tty_is_in_background(void);

/* Whether the keys up to these complete the sequence that leaves a machine: Ctrl-] three times. */
int tty_escape_typed(const char* keys, size_t length);

#endif
