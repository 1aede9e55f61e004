/* QEMU as a child that cannot outlive the conductor. */
#ifndef SIMULATED_TERMINAL_QEMU_PROCESS_H
#define SIMULATED_TERMINAL_QEMU_PROCESS_H

struct qemu_ends {
    int line;    /* to the guest's agent */
    int console; /* of the guest's kernel; QEMU's own messages come here too */
};

/* Starts QEMU with the other ends on its descriptors 3 and 4. Returns 0, or -1 with errno set. */
int start_qemu(char** arguments, struct qemu_ends* ends);

/* Ends QEMU, if it runs, and waits for its end. */
void end_qemu(void);

#endif
