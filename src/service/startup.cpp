#include "service/startup.h"

#include "bmc/request.h"
#include "bmc/start_time.h"
#include "bmc/time_stamp.h"
#include "bmc/watchdog.h"
#include "config/configuration.h"
#include "config/logs.h"
#include "service/agent_processes.h"
#include "service/pid_file.h"
#include "service/schedule.h"
#include "service/signals.h"
#include "state/flags.h"
#include "state/schedule.h"
#include "system_info.h"

#include <csignal>
#include <cstdio>
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
    if (null == -1 || dup(null) == -1 || dup(null) == -1)
        endProcess(1);
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
    if (routeSignals() != 0)
        endProcess(1);

    std::fflush(stdout); // else the child would print it again
    const pid_t child = fork();
    if (child == -1)
        endProcess(1);
    if (child > 0) {
        std::printf("Child process created: %d\n", static_cast<int>(child));
        endProcess(0);
    }
    releaseStartLock(); // this process is listed as the service from now on
    detachFromTerminal();
    if (chdir(rundir) == -1)
        syslog(LOG_INFO, "Could not change to %s", rundir);
    lockPidFile(pidfile);
    if (startSignalThread() != 0)
        endProcess(1);
}

int start() {
    umask(033); // a new configuration file's too
    takeStartLock();
    if (getServiceCount() > 0) {
        std::puts("service existed");
        printErrLog(" ", "service existed");
        return 1;
    }
    if (initIni() == 1)
        endProcess(1);

    skeleton_daemon("/var", PID_FILE);
    releaseStartLock();

    // The workers must not run on a condition variable that could not be made.
    if (init_mutex() == 1)
        endProcess(1);
    {
        const scoped_lock guard(info_lock);
        setPauseFlag(0);
        setStopFlag(0);
        setCurPauseFlag(0);
        if (stop_shm == nullptr || pause_shm == nullptr || cur_pause_shm == nullptr) {
            printErrLog("service flags ->", "no shared memory");
            endProcess(1);
        }
        mStatus = STATUS_RUNNING;
        setStartTime();
        tryBmcAgain();
        if (!stopRequested()) // its own word is the last
            getVYNInfo();
    }
    if (initThread() == 1)
        endProcess(1);
    // The stop switched it off, unless it met this start half-way or could not reach the BMC.
    if (watchdogArmed() && getWatchdog() != 0)
        switchWatchdogOff();
    return 0;
}
