/* Runs in the guest: fetches the settings for init, then becomes process 1 and runs the command.
 *
 *   guest_agent settings
 *   guest_agent fail TEXT
 *   guest_agent run [--tty ROWSxCOLUMNS] [--variable NAME=VALUE]... --directory FOLDER -- COMMAND
 * [ARG]...
 *
 * Descriptor 3 is the line to the host. Init opens it once and every process inherits it, because
 * the line forgets what is in it whenever it is closed.
 */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "frames.h"
#include "guest_command.h"

enum { STATUS_SIGNAL = 128 };

/* Input that the command has not taken yet. The host never sends more than the window. */
struct pending_input {
    char bytes[INPUT_WINDOW];
    size_t length;
    int ended;
};

static struct frame_reader reader;
static struct pending_input pending;

/* The line reads as ended until the host's side has been connected. */
static enum read_result wait_for_frame(void) {
    for (;;) {
        enum read_result result = read_frame(&reader, LINE);
        if (result == READ_END)
            usleep(5000);
        else if (result != READ_MORE)
            return result;
    }
}

static int print_settings(void) {
    if (send_frame(LINE, FRAME_HELLO, NULL, 0) != 0)
        return 1;
    while (wait_for_frame() == READ_FRAME && reader.header.type == FRAME_SETTINGS) {
        if (reader.header.length == 0)
            return 0;
        if (write_fully(STDOUT_FILENO, reader.payload, reader.header.length) != 0)
            return 1;
    }
    return 1;
}

/* Process 1 inherits every orphan; only the command's own end matters. */
static void reap(struct command* command) {
    int status;
    pid_t process;
    while ((process = waitpid(-1, &status, WNOHANG)) > 0) {
        if (process != command->process)
            continue;
        command->exited = 1;
        command->status = WIFEXITED(status) ? (uint8_t)WEXITSTATUS(status)
                                            : (uint8_t)(STATUS_SIGNAL + WTERMSIG(status));
    }
}

/* Returns 0 when nothing is left to be read now. */
static int forward(int* descriptor, enum frame_type type) {
    char bytes[FRAME_PAYLOAD_MAX];
    ssize_t got = read(*descriptor, bytes, sizeof bytes);
    if (got > 0) {
        send_frame(LINE, type, bytes, (size_t)got);
        return 1;
    }
    if (got == 0 || (errno != EINTR && errno != EAGAIN)) {
        close(*descriptor);
        *descriptor = -1;
    }
    return 0;
}

static int has_data(int descriptor) {
    struct pollfd ready = {descriptor, POLLIN, 0};
    return descriptor >= 0 && poll(&ready, 1, 0) == 1 && (ready.revents & POLLIN) != 0;
}

/* What the command wrote before it ended is in the pipes; what its heirs write later is not
 * awaited. */
static void drain(struct command* command) {
    while (has_data(command->output) && forward(&command->output, FRAME_OUTPUT))
        continue;
    while (has_data(command->error) && forward(&command->error, FRAME_ERROR))
        continue;
}

static void close_input(struct command* command) {
    if (command->input >= 0 && !command->tty)
        close(command->input);
    command->input = -1;
    pending.length = 0;
}

static void give_input(struct command* command) {
    ssize_t written = write(command->input, pending.bytes, pending.length);
    if (written < 0) {
        /* No credit is given back: the host need not read what nobody wants. */
        if (errno != EINTR && errno != EAGAIN)
            close_input(command);
        return;
    }
    pending.length -= (size_t)written;
    memmove(pending.bytes, pending.bytes + written, pending.length);
    uint32_t credit = (uint32_t)written;
    send_frame(LINE, FRAME_CREDIT, &credit, sizeof credit);
    if (pending.length == 0 && pending.ended)
        close_input(command);
}

static void take_frame(struct command* command) {
    if (read_frame(&reader, LINE) != READ_FRAME)
        return;
    switch (reader.header.type) {
        case FRAME_INPUT:
            if (command->input < 0 || pending.length + reader.header.length > INPUT_WINDOW)
                return;
            memcpy(pending.bytes + pending.length, reader.payload, reader.header.length);
            pending.length += reader.header.length;
            break;
        case FRAME_INPUT_END:
            pending.ended = 1;
            if (pending.length == 0)
                close_input(command);
            break;
        case FRAME_WINDOW:
            if (command->tty && command->output >= 0)
                ioctl(command->output, TIOCSWINSZ, reader.payload);
            break;
        default:
            break;
    }
}

static void serve(struct command* command, int child_events) {
    while (!command->exited) {
        struct pollfd ready[] = {
            {child_events, POLLIN, 0},
            {LINE, POLLIN, 0},
            {command->output, POLLIN, 0},
            {command->error, POLLIN, 0},
            {pending.length > 0 ? command->input : -1, POLLOUT, 0},
        };
        if (poll(ready, sizeof ready / sizeof ready[0], -1) < 0)
            continue;
        if ((ready[1].revents & POLLIN) != 0)
            take_frame(command);
        if (ready[2].revents != 0)
            forward(&command->output, FRAME_OUTPUT);
        if (ready[3].revents != 0)
            forward(&command->error, FRAME_ERROR);
        if (ready[4].revents != 0 && command->input >= 0)
            give_input(command);
        if (ready[0].revents != 0) {
            struct signalfd_siginfo event;
            if (read(child_events, &event, sizeof event) > 0)
                reap(command);
        }
    }
    drain(command);
}

static _Noreturn void run(struct command* command) {
    sigset_t children;
    sigemptyset(&children);
    sigaddset(&children, SIGCHLD);
    sigprocmask(SIG_BLOCK, &children, NULL);
    signal(SIGPIPE, SIG_IGN);
    int child_events = signalfd(-1, &children, SFD_CLOEXEC | SFD_NONBLOCK);
    if (child_events < 0)
        fail("signalfd");
    start_command(command);
    send_frame(LINE, FRAME_STARTED, NULL, 0);
    serve(command, child_events);
    /* Writable folders of the host must hold everything before the machine is switched off. */
    sync();
    send_frame(LINE, FRAME_STATUS, &command->status, sizeof command->status);
    /* Process 1 must not return; the host switches the machine off now. */
    for (;;)
        pause();
}

static _Noreturn void run_from_arguments(char** arguments) {
    struct command command = {0};
    command.directory = "/";
    clearenv();
    for (; *arguments != NULL && strcmp(*arguments, "--") != 0; ++arguments) {
        if (strcmp(*arguments, "--tty") == 0 && arguments[1] != NULL)
            command.tty = sscanf(*++arguments, "%hux%hu", &command.window.ws_row,
                                 &command.window.ws_col) == 2;
        else if (strcmp(*arguments, "--directory") == 0 && arguments[1] != NULL)
            command.directory = *++arguments;
        else if (strcmp(*arguments, "--variable") == 0 && arguments[1] != NULL)
            putenv(*++arguments);
    }
    if (*arguments == NULL || arguments[1] == NULL) {
        errno = EINVAL;
        fail("arguments of the command");
    }
    command.arguments = arguments + 1;
    run(&command);
}

int main(int count, char** arguments) {
    if (count == 2 && strcmp(arguments[1], "settings") == 0)
        return print_settings();
    if (count == 3 && strcmp(arguments[1], "fail") == 0)
        return send_frame(LINE, FRAME_FAILURE, arguments[2], strlen(arguments[2])) != 0;
    if (count > 2 && strcmp(arguments[1], "run") == 0)
        run_from_arguments(arguments + 2);
    return 2;
}
