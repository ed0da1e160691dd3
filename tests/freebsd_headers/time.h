#pragma once
#include_next <time.h>

#if DIALECT == 10
extern "C" __attribute__((unavailable("not before FreeBSD 11.1"))) int
clock_nanosleep(clockid_t, int, const struct timespec*, struct timespec*);
#endif
