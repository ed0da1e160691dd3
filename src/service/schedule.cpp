#include "service/schedule.h"

#include "service/command_requests.h"
#include "bmc/file_download.h"
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
#include "state/flags.h"
#include "state/locks.h"
#include "storage/inventory.h"
#include "storage/smart_collectors.h"
#include "system_info.h"

#include <syslog.h>

namespace {

constexpr int HDD_TYPE_PLAIN = 0;
constexpr int HDD_TYPE_RSTE = 1;
constexpr long SAMPLE_SECONDS = 1;

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

void probeBmc() {
    bNVMe = isSupportedNVMe();
    const bool drive_map = isSupportedSaveBiosHdd() == 1;
    logSupport("nvme support = ", bNVMe == 1);
    logSupport("save bios hdd support = ", drive_map);
    const bool watchdog = checkWatchdog() == 1;
    watchdogResetFreq = watchdog ? WATCHDOG_RESET_FREQ_ENABLED : WATCHDOG_RESET_FREQ_ABSENT;
    logSupport("OEM watchdog timer support = ", watchdog);
}

void collectStorage(int hdd_type) {
    if (hdd_type == HDD_TYPE_PLAIN)
        getSmartStorageUsage();
    else if (intelRSTeVROC == 1 && hdd_type == HDD_TYPE_RSTE)
        getSmartIntelRSTe();
}

// Under info_lock, which guards the start time that a pause or resume reads back meanwhile.
void reportAgent() {
    const scoped_lock guard(info_lock);
    getVYNInfo();
}

void collect(int& hdd_type) {
    printTimeStamp();
    // Taken before the work, so that a request made during the pass is not lost.
    if (static_flag.exchange(0) == 1) {
        hdd_type = getHddType();
        reportAgent();
        getOSName();
        getOSVersion();
    }
    printIntLog("Intel RAID ->", hdd_type);
    getLan();
    getCPUUsage();
    getMemoryUsage(1);
    collectStorage(hdd_type);
    if (bNVMe == 1)
        getNVMeSMARTInfo();
    getNetworkUsage(1);
}

} // namespace

void* monitor_handler(void*) {
    static_flag = 1;
    static_first_init = 1;
    int hdd_type = HDD_TYPE_PLAIN;
    probeBmc();
    while (getStopFlag() == 0) {
        {
            const scoped_lock guard(monitor_lock);
            waitWhilePaused(monitor_condition, monitor_lock);
            collect(hdd_type);
            waitForNextCycle(monitor_condition, monitor_lock, updateSec);
        }
        static_first_init = 0;
    }
    return nullptr;
}

void* memory_handler(void*) {
    while (getStopFlag() == 0) {
        const scoped_lock guard(memory_lock);
        waitWhilePaused(memory_condition, memory_lock);
        getMemoryUsage(0);
        getNetworkUsage(0);
        waitForNextCycle(memory_condition, memory_lock, SAMPLE_SECONDS);
    }
    return nullptr;
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
