/* The command as a child of the guest's agent. */
#ifndef SIMULATED_TERMINAL_GUEST_COMMAND_H
#define SIMULATED_TERMINAL_GUEST_COMMAND_H

#include <stdint.h>
#include <sys/ioctl.h>
#include <sys/types.h>

/* The descriptor of the line to the host, opened by init. */
enum { LINE = 3 };

struct command {
    int tty;
    struct winsize window;
    const char* directory;
    char** arguments;
    pid_t process;
    int input;  /* the pipe's or the terminal's end towards the command, -1 when closed */
    int output; /* with a terminal the same as input */
    int error;  /* -1 with a terminal */
    int exited;
    uint8_t status;
};

/* Starts the command on pipes or on a terminal of its own; does not return when it cannot. */
void start_command(struct command* command);

/* Tells the host that the machine cannot be set up, and why; the host then ends the machine. */
_Noreturn void fail(const char* text);

#endif
