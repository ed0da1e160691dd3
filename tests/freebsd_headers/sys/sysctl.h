#pragma once
#include <sys/types.h>

#define CTL_NET 4
extern "C" int sysctl(const int*, unsigned, void*, size_t*, const void*, size_t);
extern "C" int sysctlbyname(const char*, void*, size_t*, const void*, size_t);
