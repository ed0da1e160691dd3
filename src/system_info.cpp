#include "system_info.h"

#include <cstdio>
#include <mutex>
#include <unistd.h>

std::atomic<int> static_flag{0};
std::atomic<int> static_first_init{1};
std::atomic<int> bNVMe{0};
std::atomic<int> mStatus{0};

namespace {

std::mutex way_out; // held by the thread that leaves, until the process is gone
std::atomic<bool> farewell{false};
thread_local bool leaving = false;

void takeWayOut() {
    if (!leaving)
        way_out.lock();
    leaving = true;
}

} // namespace

void beginFarewell() {
    takeWayOut();
    farewell = true;
}

bool farewellBegun() {
    return farewell;
}

void endProcess(int status) {
    takeWayOut();
    std::fflush(stdout);
    std::fflush(stderr);
    _exit(status);
}
