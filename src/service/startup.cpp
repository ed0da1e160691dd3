#include "service/startup.h"

#include "bmc/start_time.h"
#include "bmc/time_stamp.h"
#include "bmc/watchdog.h"
#include "config/configuration.h"
#include "config/logs.h"
#include "include_linux/ipmi_oem.h"
#include "service/control.h"
#include "state/flags.h"
#include "state/locks.h"
#include "service/schedule.h"
#include "service/signals.h"
#include "system_info.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

namespace {

constexpr int INIT_PROCESS = 1;

void detachFromTerminal() {
    umask(033);
    if (setsid() == -1)
        endProcess(1);
    closefrom(0);
    const int null = open("/dev/null", O_RDWR); // descriptor 0
    static_cast<void>(dup(null) + dup(null));
}

// Opens, locks and writes the pid file. The descriptor stays open for the daemon's life, which
// keeps the lock; it is not handed to children.
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
    char text[16];
    std::snprintf(text, sizeof text, "%d\n", static_cast<int>(getpid()));
    if (write(pidFilehandle, text, std::strlen(text)) == -1)
        syslog(LOG_INFO, "Could not write PID lock file %s", pidfile);
}

} // namespace

void skeleton_daemon(const char* rundir, const char* pidfile) {
    if (getppid() == INIT_PROCESS)
        return;
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int sig : {SIGTSTP, SIGTTOU, SIGTTIN})
        sigaddset(&blocked, sig);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    routeSignals();

    std::fflush(stdout); // else the child would print it again
    const pid_t child = fork();
    if (child == -1)
        endProcess(1);
    if (child > 0) {
        std::printf("Child process created: %d\n", static_cast<int>(child));
        endProcess(0);
    }
    detachFromTerminal();
    if (chdir(rundir) == -1)
        syslog(LOG_INFO, "Could not change to %s", rundir);
    lockPidFile(pidfile);
    if (startSignalThread() != 0)
        endProcess(1);
}

int start() {
    if (getServiceCount() > 0) {
        std::puts("service existed");
        printErrLog(" ", "service existed");
        return 1;
    }
    if (initIni() == 1)
        endProcess(1);
    watchdogEnabled = 0;
    watchdogCmd = CMD_OEM_WATCHDOG;
    watchdogResetFreq = WATCHDOG_RESET_FREQ_START;

    skeleton_daemon("/var", "/var/run/vyn.pid");

    // The workers must not run on a condition variable that could not be made.
    if (init_mutex() == 1)
        endProcess(1);
    {
        const scoped_lock guard(info_lock);
        setPauseFlag(0);
        setStopFlag(0);
        setCurPauseFlag(0);
        mStatus = 1;
        setStartTime();
        getVYNInfo();
    }
    if (initThread() == 1)
        endProcess(1);
    return 0;
}
