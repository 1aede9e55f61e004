#define _GNU_SOURCE
#include "qemu_process.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

enum { QEMU_LINE = 3, QEMU_CONSOLE = 4, OUT_OF_THE_WAY = 10, EXIT_NOT_STARTED = 125 };

static pid_t process;

/* The ends may themselves stand on the numbers that QEMU expects: they are moved away first. */
static int place_descriptors(int line, int console) {
    int high_line = fcntl(line, F_DUPFD_CLOEXEC, OUT_OF_THE_WAY);
    int high_console = fcntl(console, F_DUPFD_CLOEXEC, OUT_OF_THE_WAY);
    int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (dup2(null, STDIN_FILENO) < 0 || dup2(high_console, STDOUT_FILENO) < 0 ||
        dup2(high_console, STDERR_FILENO) < 0 || dup2(high_line, QEMU_LINE) < 0 ||
        dup2(high_console, QEMU_CONSOLE) < 0)
        return -1;
    return 0;
}

static _Noreturn void become_qemu(char** arguments, int line, int console, pid_t parent) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, NULL);
    signal(SIGPIPE, SIG_DFL);
    /* Of its own session, the machine is not hit by keys meant for the command. */
    setsid();
    /* However the conductor ends, the machine ends with it. */
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent || place_descriptors(line, console) != 0)
        _exit(EXIT_NOT_STARTED);
    execvp(arguments[0], arguments);
    fprintf(stderr, "%s: %s\n", arguments[0], strerror(errno));
    _exit(EXIT_NOT_STARTED);
}

int start_qemu(char** arguments, struct qemu_ends* ends) {
    int line[2];
    int console[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, line) != 0 ||
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, console) != 0)
        return -1;
    pid_t parent = getpid();
    process = fork();
    if (process < 0)
        return -1;
    if (process == 0)
        become_qemu(arguments, line[1], console[1], parent);
    close(line[1]);
    close(console[1]);
    ends->line = line[0];
    ends->console = console[0];
    return 0;
}

void end_qemu(void) {
    if (process <= 0)
        return;
    kill(process, SIGKILL);
    waitpid(process, NULL, 0);
    process = 0;
}
