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
#include <sys/signalfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include "caller_tty.h"
#include "console_tail.h"
#include "frames.h"
#include "qemu_process.h"

enum {
    STATUS_TIME_LIMIT = 124,
    STATUS_MACHINE = 125,
    /* A pipe that polls as writable takes this much without blocking. */
    OUTPUT_PIECE = 4096
};

struct machine {
    struct qemu_ends ends;
    int signals;
    int deadline;
    int input; /* standard input, -1 when ended or not wanted */
    int tty;
    int started;
    size_t credit;
    const char* settings;
    const char* limit_text;
};

static struct machine machine = {
    .input = STDIN_FILENO, .credit = INPUT_WINDOW, .settings = "", .limit_text = "0"};
static struct frame_reader reader;

static void end_machine(void) {
    end_qemu();
    tty_restore();
}

static _Noreturn void leave(int status) {
    end_machine();
    exit(status);
}

static _Noreturn void leave_by_signal(int number) {
    end_machine();
    sigset_t one;
    sigemptyset(&one);
    sigaddset(&one, number);
    signal(number, SIG_DFL);
    raise(number);
    sigprocmask(SIG_UNBLOCK, &one, NULL);
    exit(STATUS_MACHINE);
}

static _Noreturn void leave_with_console(int status, const char* message) {
    end_machine();
    console_collect(machine.ends.console);
    fprintf(stderr, "terminal: %s\n", message);
    console_print_tail(stderr);
    exit(status);
}

static _Noreturn void fail(const char* operation) {
    int reason = errno;
    end_machine();
    fprintf(stderr, "terminal: %s: %s\n", operation, strerror(reason));
    exit(STATUS_MACHINE);
}

static void on_signal(void) {
    struct signalfd_siginfo event;
    if (read(machine.signals, &event, sizeof event) != sizeof event)
        return;
    if (event.ssi_signo != SIGWINCH)
        leave_by_signal((int)event.ssi_signo);
    struct winsize window;
    if (machine.tty && machine.started && ioctl(STDIN_FILENO, TIOCGWINSZ, &window) == 0)
        send_frame(machine.ends.line, FRAME_WINDOW, &window, sizeof window);
}

static void on_deadline(void) {
    char message[128];
    snprintf(
        message, sizeof message,
        "the time limit of %s s has passed; the machine's last console lines:", machine.limit_text);
    leave_with_console(STATUS_TIME_LIMIT, message);
}

/* Waits for `descriptor` while signals and the time limit keep their effect. */
static void wait_writable(int descriptor) {
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

static void deliver(int descriptor, const char* bytes, size_t length) {
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
static void send_to_guest(enum frame_type type, const void* payload, size_t length) {
    fcntl(machine.ends.line, F_SETFL, 0);
    if (send_frame(machine.ends.line, type, payload, length) != 0 && errno != EPIPE)
        fail("cannot reach the guest");
    fcntl(machine.ends.line, F_SETFL, O_NONBLOCK);
}

static void send_settings(void) {
    const char* next = machine.settings;
    size_t left = strlen(next);
    while (left > 0) {
        size_t piece = left < FRAME_PAYLOAD_MAX ? left : FRAME_PAYLOAD_MAX;
        send_to_guest(FRAME_SETTINGS, next, piece);
        next += piece;
        left -= piece;
    }
    send_to_guest(FRAME_SETTINGS, NULL, 0);
}

static void end_input(void) {
    machine.input = -1;
    send_to_guest(FRAME_INPUT_END, NULL, 0);
}

static void on_started(void) {
    machine.started = 1;
    if (tty_is_in_background())
        end_input();
    else if (machine.tty)
        tty_make_raw();
}

static void on_failure(void) {
    char message[FRAME_PAYLOAD_MAX + 128];
    snprintf(message, sizeof message,
             "the machine could not be set up: %.*s; its last console lines:",
             (int)reader.header.length, reader.payload);
    leave_with_console(STATUS_MACHINE, message);
}

static void on_frame(void) {
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

static void on_line(void) {
    switch (read_frame(&reader, machine.ends.line)) {
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

static void on_input(void) {
    char bytes[FRAME_PAYLOAD_MAX];
    size_t wanted = machine.credit < sizeof bytes ? machine.credit : sizeof bytes;
    ssize_t got = read(machine.input, bytes, wanted);
    if (got < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (got <= 0) {
        end_input();
        return;
    }
    if (machine.tty && tty_escape_typed(bytes, (size_t)got))
        leave_with_console(STATUS_MACHINE, "left by Ctrl-]; the machine's last console lines:");
    machine.credit -= (size_t)got;
    send_to_guest(FRAME_INPUT, bytes, (size_t)got);
}

/* A guest that does not listen must not block the conductor: signals and the escape still count. */
static int line_has_room(void) {
    struct pollfd ready = {machine.ends.line, POLLOUT, 0};
    return poll(&ready, 1, 0) == 1 && (ready.revents & POLLOUT) != 0;
}

static _Noreturn void conduct(void) {
    for (;;) {
        int wants_input = machine.started && machine.credit > 0 && machine.input >= 0;
        int has_room = wants_input && line_has_room();
        struct pollfd ready[] = {
            {machine.signals, POLLIN, 0},
            {machine.deadline, POLLIN, 0},
            {machine.ends.line, (short)(wants_input && !has_room ? POLLIN | POLLOUT : POLLIN), 0},
            {machine.ends.console, POLLIN, 0},
            {has_room ? machine.input : -1, POLLIN, 0},
        };
        if (poll(ready, sizeof ready / sizeof ready[0], -1) < 0)
            continue;
        if (ready[0].revents != 0)
            on_signal();
        if (ready[1].revents != 0)
            on_deadline();
        if (ready[3].revents != 0 && console_collect(machine.ends.console) == 0)
            machine.ends.console = -1;
        if ((ready[2].revents & ~POLLOUT) != 0)
            on_line();
        if (ready[4].revents != 0)
            on_input();
    }
}

static void catch_signals(void) {
    static const int wanted[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGWINCH};
    sigset_t caught;
    sigemptyset(&caught);
    for (size_t i = 0; i < sizeof wanted / sizeof wanted[0]; ++i) {
        struct sigaction before;
        /* What the caller ignores, as a shell does for its background, stays ignored. */
        if (sigaction(wanted[i], NULL, &before) == 0 && before.sa_handler != SIG_IGN)
            sigaddset(&caught, wanted[i]);
    }
    sigprocmask(SIG_BLOCK, &caught, NULL);
    signal(SIGPIPE, SIG_IGN);
    machine.signals = signalfd(-1, &caught, SFD_CLOEXEC | SFD_NONBLOCK);
    if (machine.signals < 0)
        fail("signalfd");
}

static void set_deadline(long seconds) {
    machine.deadline = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
    struct itimerspec when = {.it_value.tv_sec = seconds};
    if (machine.deadline < 0 || timerfd_settime(machine.deadline, 0, &when, NULL) != 0)
        fail("timer");
}

/* A caller may have closed them; nothing else may then take their numbers. */
static void keep_standard_descriptors(void) {
    int descriptor;
    do {
        descriptor = open("/dev/null", O_RDWR);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    close(descriptor);
}

/* Returns where QEMU's command line starts, or 0. */
static int parse_options(int count, char** arguments, long* limit) {
    int next = 1;
    for (; next < count && strcmp(arguments[next], "--") != 0; ++next) {
        if (strcmp(arguments[next], "--tty") == 0)
            machine.tty = 1;
        else if (strcmp(arguments[next], "--console") == 0)
            console_show(STDERR_FILENO);
        else if (strcmp(arguments[next], "--settings") == 0 && next + 1 < count)
            machine.settings = arguments[++next];
        else if (strcmp(arguments[next], "--time-limit") == 0 && next + 1 < count)
            *limit = strtol(machine.limit_text = arguments[++next], NULL, 10);
    }
    return next + 1 < count ? next + 1 : 0;
}

int main(int count, char** arguments) {
    long limit = 0;
    int qemu = parse_options(count, arguments, &limit);
    if (qemu == 0)
        return STATUS_MACHINE;
    keep_standard_descriptors();
    catch_signals();
    set_deadline(limit);
    if (start_qemu(arguments + qemu, &machine.ends) != 0)
        fail("cannot start QEMU");
    fcntl(machine.ends.line, F_SETFL, O_NONBLOCK);
    fcntl(machine.ends.console, F_SETFL, O_NONBLOCK);
    conduct();
}
