/* Runs on the host: starts QEMU, joins it to the caller's standard streams, and ends it.
 *
 *   conduct_machine [--time-limit SECONDS] [--tty] [--console] --settings TEXT -- QEMU [ARG]...
 *
 * QEMU finds the line to the guest's agent on descriptor 3 and the guest's console on 4.
 * Exit status: that of the command; 124 time limit; 125 the machine failed.
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
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "console_tail.h"
#include "frames.h"

enum {
    STATUS_TIME_LIMIT = 124,
    STATUS_MACHINE = 125,
    /* A pipe that polls as writable takes this much without blocking. */
    OUTPUT_PIECE = 4096,
    /* Ctrl-], three times in a row, leaves a machine that no longer answers. */
    ESCAPE_KEY = 0x1d,
    ESCAPE_COUNT = 3
};

struct machine {
    pid_t process;
    int line;
    int console;
    int signals;
    int deadline;
    int input; /* standard input, -1 when ended or not wanted */
    int tty;
    int show_console;
    int started;
    size_t credit;
    int escapes;
    const char *settings;
    const char *limit_text;
};

static struct machine machine = {.input = STDIN_FILENO, .credit = INPUT_WINDOW};
static struct frame_reader reader;
static struct termios tty_before;
static int tty_changed;

static void end_machine(void)
{
    if (machine.process > 0) {
        kill(machine.process, SIGKILL);
        waitpid(machine.process, NULL, 0);
        machine.process = 0;
    }
    if (tty_changed)
        tcsetattr(STDIN_FILENO, TCSADRAIN, &tty_before);
    tty_changed = 0;
}

static _Noreturn void leave(int status)
{
    end_machine();
    exit(status);
}

static _Noreturn void leave_by_signal(int number)
{
    end_machine();
    sigset_t one;
    sigemptyset(&one);
    sigaddset(&one, number);
    signal(number, SIG_DFL);
    raise(number);
    sigprocmask(SIG_UNBLOCK, &one, NULL);
    exit(STATUS_MACHINE);
}

static _Noreturn void leave_with_console(int status, const char *message)
{
    end_machine();
    console_collect(machine.console);
    fprintf(stderr, "terminal: %s\n", message);
    console_print_tail(stderr);
    exit(status);
}

static _Noreturn void fail(const char *operation)
{
    int reason = errno;
    end_machine();
    fprintf(stderr, "terminal: %s: %s\n", operation, strerror(reason));
    exit(STATUS_MACHINE);
}

static void start_qemu(char **arguments)
{
    int line[2];
    int console[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, line) != 0 ||
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, console) != 0)
        fail("socketpair");
    pid_t parent = getpid();
    machine.process = fork();
    if (machine.process < 0)
        fail("fork");
    if (machine.process == 0) {
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, NULL);
        signal(SIGPIPE, SIG_DFL);
        /* Of its own session, the machine is not hit by keys meant for the command. */
        setsid();
        /* However the conductor ends, the machine ends with it. */
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent)
            _exit(STATUS_MACHINE);
        /* The pairs may stand on 3 and 4 themselves: move them out of the way first. */
        int high_line = fcntl(line[1], F_DUPFD_CLOEXEC, 10);
        int high_console = fcntl(console[1], F_DUPFD_CLOEXEC, 10);
        int null = open("/dev/null", O_RDWR | O_CLOEXEC);
        if (dup2(null, STDIN_FILENO) < 0 || dup2(high_console, STDOUT_FILENO) < 0 ||
            dup2(high_console, STDERR_FILENO) < 0 || dup2(high_line, 3) < 0 ||
            dup2(high_console, 4) < 0)
            _exit(STATUS_MACHINE);
        execvp(arguments[0], arguments);
        fprintf(stderr, "%s: %s\n", arguments[0], strerror(errno));
        _exit(STATUS_MACHINE);
    }
    close(line[1]);
    close(console[1]);
    machine.line = line[0];
    machine.console = console[0];
    fcntl(machine.line, F_SETFL, O_NONBLOCK);
    fcntl(machine.console, F_SETFL, O_NONBLOCK);
}

static void on_signal(void)
{
    struct signalfd_siginfo event;
    if (read(machine.signals, &event, sizeof event) != sizeof event)
        return;
    if (event.ssi_signo != SIGWINCH)
        leave_by_signal((int)event.ssi_signo);
    struct winsize window;
    if (machine.tty && machine.started && ioctl(STDIN_FILENO, TIOCGWINSZ, &window) == 0)
        send_frame(machine.line, FRAME_WINDOW, &window, sizeof window);
}

static void on_deadline(void)
{
    char message[128];
    snprintf(message, sizeof message,
             "the time limit of %s s has passed; the machine's last console lines:",
             machine.limit_text);
    leave_with_console(STATUS_TIME_LIMIT, message);
}

/* Waits for `descriptor` while signals and the time limit keep their effect. */
static void wait_writable(int descriptor)
{
    for (;;) {
        struct pollfd ready[] = {
            {machine.signals, POLLIN, 0}, {machine.deadline, POLLIN, 0}, {descriptor, POLLOUT, 0}};
        if (poll(ready, 3, -1) < 0)
            continue;
        if (ready[0].revents != 0)
            on_signal();
        if (ready[1].revents != 0)
            on_deadline();
        if (ready[2].revents != 0)
            return;
    }
}

static void deliver(int descriptor, const char *bytes, size_t length)
{
    while (length > 0) {
        wait_writable(descriptor);
        size_t piece = length < OUTPUT_PIECE ? length : OUTPUT_PIECE;
        ssize_t written = write(descriptor, bytes, piece);
        if (written < 0 && errno == EPIPE)
            leave_by_signal(SIGPIPE);
        if (written < 0 && errno != EINTR && errno != EAGAIN)
            fail("cannot write the command's output");
        if (written > 0) {
            bytes += written;
            length -= (size_t)written;
        }
    }
}

/* The line is non-blocking for reads; what is sent is small and the guest always takes it. */
static void send_to_guest(enum frame_type type, const void *payload, size_t length)
{
    fcntl(machine.line, F_SETFL, 0);
    if (send_frame(machine.line, type, payload, length) != 0 && errno != EPIPE)
        fail("cannot reach the guest");
    fcntl(machine.line, F_SETFL, O_NONBLOCK);
}

static void send_settings(void)
{
    const char *next = machine.settings;
    size_t left = strlen(next);
    while (left > 0) {
        size_t piece = left < FRAME_PAYLOAD_MAX ? left : FRAME_PAYLOAD_MAX;
        send_to_guest(FRAME_SETTINGS, next, piece);
        next += piece;
        left -= piece;
    }
    send_to_guest(FRAME_SETTINGS, NULL, 0);
}

static void on_started(void)
{
    machine.started = 1;
    /* Reading a tty from the background would stop the conductor. */
    if (isatty(STDIN_FILENO) && tcgetpgrp(STDIN_FILENO) != getpgrp()) {
        machine.input = -1;
        send_to_guest(FRAME_INPUT_END, NULL, 0);
    }
    if (!machine.tty || tcgetattr(STDIN_FILENO, &tty_before) != 0)
        return;
    struct termios raw = tty_before;
    cfmakeraw(&raw);
    tty_changed = 1;
    tcsetattr(STDIN_FILENO, TCSADRAIN, &raw);
}

static void on_failure(void)
{
    char message[FRAME_PAYLOAD_MAX + 128];
    snprintf(message, sizeof message,
             "the machine could not be set up: %.*s; its last console lines:",
             (int)reader.header.length, reader.payload);
    leave_with_console(STATUS_MACHINE, message);
}

static void on_frame(void)
{
    switch (reader.header.type) {
        case FRAME_HELLO:
            send_settings();
            break;
        case FRAME_STARTED:
            on_started();
            break;
        case FRAME_OUTPUT:
            deliver(STDOUT_FILENO, reader.payload, reader.header.length);
            break;
        case FRAME_ERROR:
            deliver(STDERR_FILENO, reader.payload, reader.header.length);
            break;
        case FRAME_CREDIT: {
            uint32_t credit;
            memcpy(&credit, reader.payload, sizeof credit);
            machine.credit += credit;
            break;
        }
        case FRAME_STATUS:
            leave((uint8_t)reader.payload[0]);
        case FRAME_FAILURE:
            on_failure();
            break;
        default:
            leave_with_console(STATUS_MACHINE, "the guest sent an unknown message; console:");
    }
}

static void on_line(void)
{
    switch (read_frame(&reader, machine.line)) {
        case READ_FRAME:
            on_frame();
            break;
        case READ_MORE:
            break;
        case READ_END:
        case READ_BROKEN:
            leave_with_console(STATUS_MACHINE,
                               "the machine ended before the command did; its last console lines:");
    }
}

static void watch_for_escape(const char *bytes, ssize_t length)
{
    for (ssize_t i = 0; i < length; ++i) {
        machine.escapes = bytes[i] == ESCAPE_KEY ? machine.escapes + 1 : 0;
        if (machine.escapes == ESCAPE_COUNT)
            leave_with_console(STATUS_MACHINE, "left by Ctrl-]; the machine's last console lines:");
    }
}

static void on_input(void)
{
    char bytes[FRAME_PAYLOAD_MAX];
    size_t wanted = machine.credit < sizeof bytes ? machine.credit : sizeof bytes;
    ssize_t got = read(machine.input, bytes, wanted);
    if (got < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (got <= 0) {
        machine.input = -1;
        send_to_guest(FRAME_INPUT_END, NULL, 0);
        return;
    }
    if (machine.tty)
        watch_for_escape(bytes, got);
    machine.credit -= (size_t)got;
    send_to_guest(FRAME_INPUT, bytes, (size_t)got);
}

/* A guest that does not listen must not block the conductor: signals and the escape still count. */
static int line_has_room(void)
{
    struct pollfd ready = {machine.line, POLLOUT, 0};
    return poll(&ready, 1, 0) == 1 && (ready.revents & POLLOUT) != 0;
}

static _Noreturn void conduct(void)
{
    for (;;) {
        int wants_input = machine.started && machine.credit > 0 && machine.input >= 0;
        int has_room = wants_input && line_has_room();
        struct pollfd ready[] = {
            {machine.signals, POLLIN, 0},
            {machine.deadline, POLLIN, 0},
            {machine.line, (short)(wants_input && !has_room ? POLLIN | POLLOUT : POLLIN), 0},
            {machine.console, POLLIN, 0},
            {has_room ? machine.input : -1, POLLIN, 0},
        };
        if (poll(ready, sizeof ready / sizeof ready[0], -1) < 0)
            continue;
        if (ready[0].revents != 0)
            on_signal();
        if (ready[1].revents != 0)
            on_deadline();
        if (ready[3].revents != 0 && console_collect(machine.console) == 0)
            machine.console = -1;
        if ((ready[2].revents & ~POLLOUT) != 0)
            on_line();
        if (ready[4].revents != 0)
            on_input();
    }
}

static void catch_signals(void)
{
    sigset_t caught;
    sigemptyset(&caught);
    sigaddset(&caught, SIGINT);
    sigaddset(&caught, SIGTERM);
    sigaddset(&caught, SIGHUP);
    sigaddset(&caught, SIGQUIT);
    sigaddset(&caught, SIGWINCH);
    sigprocmask(SIG_BLOCK, &caught, NULL);
    signal(SIGPIPE, SIG_IGN);
    machine.signals = signalfd(-1, &caught, SFD_CLOEXEC | SFD_NONBLOCK);
    if (machine.signals < 0)
        fail("signalfd");
}

static void set_deadline(long seconds)
{
    machine.deadline = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
    struct itimerspec when = {.it_value.tv_sec = seconds};
    if (machine.deadline < 0 || timerfd_settime(machine.deadline, 0, &when, NULL) != 0)
        fail("timer");
}

/* A caller may have closed them; nothing else may then take their numbers. */
static void keep_standard_descriptors(void)
{
    int descriptor;
    do {
        descriptor = open("/dev/null", O_RDWR);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    close(descriptor);
}

int main(int count, char **arguments)
{
    int next = 1;
    long limit = 0;
    machine.limit_text = "0";
    machine.settings = "";
    for (; next < count && strcmp(arguments[next], "--") != 0; ++next) {
        if (strcmp(arguments[next], "--tty") == 0)
            machine.tty = 1;
        else if (strcmp(arguments[next], "--console") == 0)
            console_show(STDERR_FILENO);
        else if (strcmp(arguments[next], "--settings") == 0 && next + 1 < count)
            machine.settings = arguments[++next];
        else if (strcmp(arguments[next], "--time-limit") == 0 && next + 1 < count)
            limit = strtol(machine.limit_text = arguments[++next], NULL, 10);
    }
    if (next + 1 >= count)
        return STATUS_MACHINE;
    keep_standard_descriptors();
    catch_signals();
    set_deadline(limit);
    start_qemu(arguments + next + 1);
    conduct();
}
