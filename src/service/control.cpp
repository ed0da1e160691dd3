#include "service/control.h"

#include "bmc/clear.h"
#include "bmc/parameter_upload.h"
#include "bmc/request.h"
#include "bmc/start_time.h"
#include "bmc/time_stamp.h"
#include "bmc/watchdog.h"
#include "config/logs.h"
#include "service/agent_processes.h"
#include "service/pid_file.h"
#include "smipmi.h"
#include "state/flags.h"
#include "state/schedule.h"
#include "system_info.h"
#include "text.h"
#include "tools/ps.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <syslog.h>
#include <unistd.h>

namespace {

constexpr const char* WATCHER_NAME = "watchvyn";
constexpr const char* WATCHER_PID_FILE = "/var/run/watchvyn.pid";

// The companion watcher would start the agent again; it is stopped by its pid file or, without one,
// by its name.
void stopWatcher() {
    if (const auto pids = tools.read_file(WATCHER_PID_FILE)) {
        std::string text = *pids;
        std::replace(text.begin(), text.end(), '\n', ' ');
        for (const std::string_view word : wordsOf(text))
            if (const int pid = leadingInteger(word, 0); pid > 0)
                kill(pid, SIGTERM);
        return;
    }
    for (const listed_process& process : parsePs(tools.run(psCommand(), {}).text))
        if (process.pid != getpid() && process.listing.find(WATCHER_NAME) != std::string::npos &&
            process.listing.find("grep") == std::string::npos)
            kill(process.pid, SIGHUP);
}

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

// Changes the pause flag and tells the BMC; info_lock is held. Another process may change it back
// while that is told. That the service ends is the last that is told.
void changePause(int value) {
    constexpr int TRIES = 3;
    setPauseFlag(value);
    getStartTime();
    for (int told = -1, tries = 0; tries < TRIES; ++tries) {
        const int paused = getPauseFlag();
        if (paused == told || farewellBegun() || getStopFlag() != 0)
            return;
        mStatus = paused == 1 ? STATUS_PAUSED : STATUS_RUNNING;
        getVYNInfo();
        told = paused;
    }
}

// Leaves the BMC as if the service had never run.
void sayFarewell() {
    reserveUploads();
    clearData();
    // Held to the end, or the reset thread might find the timer off and start it again.
    watchdog_reset_schedule.hold();
    if (watchdogEnabled != 1 && !watchdogArmed())
        return;
    switchWatchdogOff();
}

} // namespace

int stop() {
    if (!daemonFound())
        return 1;
    announce("stop...");
    {
        const scoped_lock guard(info_lock);
        setStopFlag(1);
        mStatus = STATUS_STOPPED;
        getStartTime();
        getVYNInfo();
        if (checkWatchdog() == 1)
            switchWatchdogOff();
    }
    stopWatcher();
    destroy();
    _destroy();
    removeHeldFlags();
    tellUnreached();
    signal_handler(SIGINT);
    return 0;
}

int user_request_pause() {
    announce("pause...");
    const scoped_lock guard(info_lock);
    changePause(1);
    return 0;
}

int user_request_resume() {
    announce("resume...");
    const scoped_lock guard(info_lock);
    changePause(0);
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
        beginFarewell();
        sayFarewell();
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
