/* Preloaded: shifts the wall clock by the seconds in the file that CLOCK_SHIFT names. */
#define _GNU_SOURCE
#include <stdio.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

time_t time(time_t* result) {
    struct timespec now = {0, 0};
    long shift = 0;
    syscall(SYS_clock_gettime, CLOCK_REALTIME, &now);
    FILE* file = fopen(getenv("CLOCK_SHIFT"), "re");
    if (file != NULL) {
        if (fscanf(file, "%ld", &shift) != 1)
            shift = 0;
        fclose(file);
    }
    if (result != NULL)
        *result = now.tv_sec + shift;
    return now.tv_sec + shift;
}
