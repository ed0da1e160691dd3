#pragma once
#include_next <unistd.h>

extern "C" int pipe2(int*, int);
#if DIALECT == 10
extern "C" __attribute__((unavailable("not before FreeBSD 11.1"))) int fdatasync(int);
#endif
