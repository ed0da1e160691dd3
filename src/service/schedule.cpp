#include "service/schedule.h"

#include "bmc/file_download.h"
#include "bmc/parameter_upload.h"
#include "bmc/request.h"
#include "bmc/restart_monitor.h"
#include "bmc/time_stamp.h"
#include "bmc/watchdog.h"
#include "config/configuration.h"
#include "config/logs.h"
#include "host/cpu_memory.h"
#include "host/network_inventory.h"
#include "host/network_usage.h"
#include "host/os_identity.h"
#include "nvme/smart.h"
#include "service/command_requests.h"
#include "state/flags.h"
#include "state/schedule.h"
#include "storage/inventory.h"
#include "storage/smart_collectors.h"
#include "storage/storage_kind.h"
#include "system_info.h"
#include "tools/ask.h"

#include <chrono>
#include <cstdio>
#include <string>
#include <syslog.h>

namespace {

using std::chrono::steady_clock;

constexpr int HDD_TYPE_PLAIN = 0;
constexpr int HDD_TYPE_RSTE = 1;
constexpr std::chrono::seconds SAMPLE_PERIOD{1};
constexpr std::chrono::seconds SAMPLES_LATE_MOST{60};

pthread_t monitor_thread, memory_thread, command_request_thread, bmc_restart_monitor_thread,
    watchdog_reset_thread;

struct worker {
    pthread_t* thread;
    void* (*body)(void*);
    const char* failure;
};

constexpr worker WORKERS[] = {
    {&monitor_thread, monitor_handler, " monitor thread create failed"},
    {&memory_thread, memory_handler, " memory thread create failed"},
    {&command_request_thread, command_request_handler, " command thread create failed"},
    {&bmc_restart_monitor_thread, bmc_restart_monitor_handler,
     " BMC restart monitor thread create failed"},
    {&watchdog_reset_thread, watchdog_reset_handler, " watchdog reset thread create failed"},
};

void logSupport(const char* title, bool supported) {
    printCommandLog(title, supported ? "True" : "False");
}

// What is not answered here is taken for absent as long as the service runs: one probe that timed
// out does not cost the next. A stop leaves out the rest.
void probeBmc() {
    tryBmcAgain();
    bNVMe = isSupportedNVMe();
    if (stopRequested())
        return;
    tryBmcAgain();
    const bool drive_map = isSupportedSaveBiosHdd() == 1;
    logSupport("nvme support = ", bNVMe == 1);
    logSupport("save bios hdd support = ", drive_map);
    if (stopRequested())
        return;
    const bool watchdog = checkWatchdog() == 1;
    watchdogResetFreq = watchdog ? WATCHDOG_RESET_FREQ_ENABLED : WATCHDOG_RESET_FREQ_ABSENT;
    logSupport("OEM watchdog timer support = ", watchdog);
    // The reset thread may have tried before the command number was known.
    if (watchdog)
        watchdog_reset_schedule.wake();
}

// Under info_lock, which guards the start time that a pause or resume reads back meanwhile.
void reportAgent() {
    const scoped_lock guard(info_lock);
    if (stopRequested()) // and that was told
        return;
    mStatus = getPauseFlag() == 1 ? STATUS_PAUSED : STATUS_RUNNING;
    getVYNInfo();
}

int hdd_type = HDD_TYPE_PLAIN;

void collectStatic() {
    // Taken before the work, so that a request made during the pass is not lost.
    if (static_flag.exchange(0) == 1) {
        const unsigned long untaken = untakenValues();
        hdd_type = getHddType();
        reportAgent();
        getOSName();
        getOSVersion();
        if (untakenValues() != untaken)
            static_flag = 1;
    }
    printIntLog("Intel RAID ->", hdd_type);
}

void collectStorage() {
    if (hdd_type == HDD_TYPE_PLAIN)
        getSmartStorageUsage();
    else if (intelRSTeVROC == 1 && hdd_type == HDD_TYPE_RSTE)
        getSmartIntelRSTe();
}

void collectNvme() {
    if (bNVMe == 1)
        getNVMeSMARTInfo();
}

// In the order of a cycle.
constexpr void (*COLLECTORS[])() = {
    collectStatic,  [] { getLan(); }, [] { getCPUUsage(); },      [] { getMemoryUsage(1); },
    collectStorage, collectNvme,      [] { getNetworkUsage(1); },
};

} // namespace

void beginMonitoring() {
    static_flag = 1;
    static_first_init = 1;
    hdd_type = HDD_TYPE_PLAIN;
    probeBmc();
}

void monitorPass() {
    if (stopRequested()) // while the service was paused
        return;
    tryBmcAgain();
    beginAskingCycle();
    printTimeStamp();
    for (void (*collect)() : COLLECTORS) {
        if (stopRequested())
            return;
        collect();
    }
}

void* monitor_handler(void*) {
    beginMonitoring();
    while (getStopFlag() == 0) {
        {
            const scoped_lock guard = monitor_schedule.cycle();
            if (monitor_schedule.waitWhilePaused())
                dropNetworkSamples();
            monitorPass();
            monitor_schedule.waitForNextCycle(updateSec);
        }
        static_first_init = 0;
    }
    return nullptr;
}

// At a fixed rate: what is late is made up for at once, so that there is a sample for each second.
void* memory_handler(void*) {
    auto due = steady_clock::now();
    while (getStopFlag() == 0) {
        const scoped_lock guard = memory_schedule.cycle();
        if (memory_schedule.waitWhilePaused() || steady_clock::now() - due > SAMPLES_LATE_MOST) {
            dropNetworkSamples();
            due = steady_clock::now();
        }
        getMemoryUsage(0);
        getNetworkUsage(0);
        due += SAMPLE_PERIOD;
        memory_schedule.waitUntil(due);
    }
    return nullptr;
}

int init_mutex() {
    const schedule* failed = initialiseSchedules();
    if (failed == nullptr)
        return 0;
    std::puts("\n condition init failed");
    printErrLog("initThread ", std::string(failed->name()) + " condition init failed");
    return 1;
}

int initThread() {
    for (const worker& each : WORKERS) {
        if (pthread_create(each.thread, nullptr, each.body, nullptr) != 0) {
            printErrLog("pthread_create ", each.failure);
            return 1;
        }
    }
    closelog();
    for (const worker& each : WORKERS)
        pthread_join(*each.thread, nullptr);
    return 0;
}
