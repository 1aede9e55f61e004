#define _GNU_SOURCE
#include "guest_command.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <termios.h>
#include <unistd.h>

#include "frames.h"

enum { STATUS_NOT_FOUND = 127, STATUS_NOT_EXECUTABLE = 126 };

_Noreturn void fail(const char* text) {
    char message[512];
    int length = snprintf(message, sizeof message, "%s: %s", text, strerror(errno));
    send_frame(LINE, FRAME_FAILURE, message, (size_t)length);
    for (;;)
        pause();
}

static void exec_command(const struct command* command) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, NULL);
    signal(SIGPIPE, SIG_DFL);
    if (chdir(command->directory) != 0)
        fail(command->directory);
    close(LINE);
    execvp(command->arguments[0], command->arguments);
    int reason = errno;
    fprintf(stderr, "terminal: cannot run %s: %s\n", command->arguments[0], strerror(reason));
    _exit(reason == ENOENT || reason == ENOTDIR ? STATUS_NOT_FOUND : STATUS_NOT_EXECUTABLE);
}

static void start_on_pipes(struct command* command) {
    int input[2];
    int output[2];
    int error[2];
    if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0 ||
        pipe2(error, O_CLOEXEC) != 0)
        fail("pipe");
    command->process = fork();
    if (command->process < 0)
        fail("fork");
    if (command->process == 0) {
        setsid();
        dup2(input[0], STDIN_FILENO);
        dup2(output[1], STDOUT_FILENO);
        dup2(error[1], STDERR_FILENO);
        exec_command(command);
    }
    close(input[0]);
    close(output[1]);
    close(error[1]);
    command->input = input[1];
    command->output = output[0];
    command->error = error[0];
    fcntl(command->input, F_SETFL, O_NONBLOCK);
}

static void start_on_terminal(struct command* command) {
    int master = open("/dev/ptmx", O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0)
        fail("/dev/ptmx");
    command->process = fork();
    if (command->process < 0)
        fail("fork");
    if (command->process == 0) {
        setsid();
        int slave = open(ptsname(master), O_RDWR);
        if (slave < 0 || ioctl(slave, TIOCSWINSZ, &command->window) != 0 ||
            ioctl(slave, TIOCSCTTY, 0) != 0)
            fail("terminal");
        dup2(slave, STDIN_FILENO);
        dup2(slave, STDOUT_FILENO);
        dup2(slave, STDERR_FILENO);
        if (slave > STDERR_FILENO)
            close(slave);
        exec_command(command);
    }
    command->input = master;
    command->output = master;
    command->error = -1;
}

void start_command(struct command* command) {
    if (command->tty)
        start_on_terminal(command);
    else
        start_on_pipes(command);
}
