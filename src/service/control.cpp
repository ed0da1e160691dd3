#include "service/control.h"

#include "bmc/clear.h"
#include "bmc/parameter_upload.h"
#include "bmc/start_time.h"
#include "bmc/time_stamp.h"
#include "bmc/watchdog.h"
#include "config/logs.h"
#include "state/flags.h"
#include "state/locks.h"
#include "shell.h"
#include "smipmi.h"
#include "system_info.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <syslog.h>
#include <unistd.h>

int pidFilehandle = -1;

namespace {

constexpr int STATUS_PAUSED = 0;
constexpr int STATUS_RUNNING = 1;
constexpr int STATUS_STOPPED = 2;

// The companion watcher would start the agent again; it is stopped by its pid file or, without
// one, by its name.
constexpr const char* STOP_WATCHER =
    "test -f /var/run/watchvyn.pid;if [ $? -ne 0 ];then watch=`ps -x | grep watchvyn | grep -v "
    "grep | awk '{print $1}'`;if [ $? -eq 0 ];then for i in $watch;do /bin/kill -s HUP "
    "$i;done;fi;else kill `cat /var/run/watchvyn.pid`;fi;";

bool daemonFound() {
    if (getServiceCount() > 0)
        return true;
    std::puts("no service");
    return false;
}

void announce(const char* action) {
    std::printf("Corvane service %s\n", action);
    printLog("Corvane service", action);
}

// Changes a flag and tells the BMC the new status; info_lock is held.
void changeStatus(int (*set_flag)(int), int value, int status) {
    set_flag(value);
    mStatus = status;
    getStartTime();
    getVYNInfo();
}

} // namespace

int stop() {
    if (!daemonFound())
        return 1;
    announce("stop...");
    {
        const scoped_lock guard(info_lock);
        changeStatus(setStopFlag, 1, STATUS_STOPPED);
        if (checkWatchdog() == 1)
            setWatchdog(0);
    }
    shell_capture(STOP_WATCHER, "stop watcher").close();
    destroy();
    _destroy();
    removeHeldFlags();
    signal_handler(SIGINT);
    return 0;
}

int user_request_pause() {
    announce("pause...");
    const scoped_lock guard(info_lock);
    changeStatus(setPauseFlag, 1, STATUS_PAUSED);
    return 0;
}

int user_request_resume() {
    announce("resume...");
    const scoped_lock guard(info_lock);
    changeStatus(setPauseFlag, 0, STATUS_RUNNING);
    return 0;
}

int pause_service() {
    return daemonFound() ? user_request_pause() : 1;
}

int resume_service() {
    return daemonFound() ? user_request_resume() : 1;
}

void signal_handler(int sig) {
    switch (sig) {
    case SIGINT:
        syslog(LOG_INFO, "Daemon exiting by interrupt");
        break;
    case SIGTERM:
        syslog(LOG_INFO, "Daemon exiting by system off");
        reserveUploads();
        clearData();
        if (watchdogEnabled == 1) {
            // Held to the end, or the reset thread might find the timer off and start it again.
            pthread_mutex_lock(&watchdog_reset_lock);
            setWatchdog(0);
        }
        break;
    case SIGHUP:
        syslog(LOG_WARNING, "Received SIGHUP signal.");
        return;
    default:
        syslog(LOG_WARNING, "Unhandled signal %s", strsignal(sig));
        return;
    }
    daemonShutdown();
    endProcess(0);
}

void daemonShutdown() {
    if (pidFilehandle >= 0)
        close(pidFilehandle);
    pidFilehandle = -1;
    std::puts("close done");
}
