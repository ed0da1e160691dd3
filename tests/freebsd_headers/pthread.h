#pragma once
#include_next <pthread.h>

// For the machine's <mutex>, which counts on them.
extern "C" int pthread_mutex_clocklock(pthread_mutex_t*, clockid_t, const struct timespec*);
extern "C" int pthread_cond_clockwait(pthread_cond_t*, pthread_mutex_t*, clockid_t,
                                      const struct timespec*);
