#pragma once
#include <time.h>

typedef unsigned int nfds_t;
struct pollfd {
    int fd;
    short events, revents;
};
#define POLLIN   1
#define POLLOUT  4
#define POLLERR  8
#define POLLHUP  16
#define POLLNVAL 32
extern "C" int poll(struct pollfd*, nfds_t, int);
extern "C" int ppoll(struct pollfd*, nfds_t, const struct timespec*, const sigset_t*);
