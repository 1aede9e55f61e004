// Loads the shared library named by the argument and prints the nanoseconds that took. A process of
// its own, because a library loads only once in a process.
#include <dlfcn.h>
#include <stdio.h>
#include <time.h>

static long long now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1000000000LL + time.tv_nsec;
}

int main(int count, char** arguments) {
    if (count != 2)
        return 2;
    const long long start = now();
    const void* const library = dlopen(arguments[1], RTLD_NOW);
    const long long end = now();
    if (library == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    printf("%lld\n", end - start);
    return 0;
}
