#include "system_info.h"

#include <cstdio>
#include <unistd.h>

std::atomic<int> static_flag{0};
std::atomic<int> static_first_init{1};
std::atomic<int> bNVMe{0};
std::atomic<int> mStatus{0};

void endProcess(int status) {
    std::fflush(stdout);
    std::fflush(stderr);
    _exit(status);
}
