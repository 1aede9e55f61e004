/* The guest's console: nobody reads it while all is well, and its end explains a failure. */
#ifndef SIMULATED_TERMINAL_CONSOLE_TAIL_H
#define SIMULATED_TERMINAL_CONSOLE_TAIL_H

#include <stdio.h>

/* From now on, copy the console to `descriptor` as it comes. */
void console_show(int descriptor);

/* Takes what is there now; returns 0 when the console has ended. */
int console_collect(int descriptor);

/* Prints the last lines, without what a terminal could take for a command. */
void console_print_tail(FILE* stream);

#endif
