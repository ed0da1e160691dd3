#include "service/pid_file.h"

#include "system_info.h"

#include <chrono>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <syslog.h>
#include <thread>
#include <unistd.h>

int pidFilehandle = -1;

namespace {

constexpr const char* START_LOCK_FILE = "/var/run/vyn.start.lock";
constexpr std::chrono::milliseconds START_LOCK_PAUSE{10};
constexpr int START_LOCK_TRIES = 1000;

int start_lock = -1;

} // namespace

void lockPidFile(const char* pidfile) {
    pidFilehandle = open(pidfile, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (pidFilehandle == -1) {
        syslog(LOG_INFO, "Could not open PID lock file %s, exiting", pidfile);
        endProcess(1);
    }
    if (lockf(pidFilehandle, F_TLOCK, 0) == -1) {
        syslog(LOG_INFO, "Could not lock PID lock file %s, exiting", pidfile);
        endProcess(1);
    }
    const std::string text = std::to_string(getpid()) + "\n";
    if (write(pidFilehandle, text.data(), text.size()) == -1)
        syslog(LOG_INFO, "Could not write PID lock file %s", pidfile);
}

void takeStartLock() {
    start_lock = open(START_LOCK_FILE, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    for (int tries = START_LOCK_TRIES; start_lock >= 0 && tries > 0; --tries) {
        if (flock(start_lock, LOCK_EX | LOCK_NB) == 0)
            return;
        std::this_thread::sleep_for(START_LOCK_PAUSE);
    }
}

void releaseStartLock() {
    if (start_lock >= 0)
        close(start_lock);
    start_lock = -1;
}
