// Read by this machine's <pthread.h>: a thread is a pointer.
#pragma once
#define pthread_t integer_thread
#include_next <bits/pthreadtypes.h>
#undef pthread_t

typedef struct pthread* pthread_t;
