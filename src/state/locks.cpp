#include "state/locks.h"

#include "config/logs.h"
#include "state/flags.h"

#include <cstdio>
#include <ctime>
#include <initializer_list>

pthread_mutex_t monitor_lock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t memory_lock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t command_request_lock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t bmc_restart_monitor_lock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t watchdog_reset_lock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t info_lock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t cmd_lock = PTHREAD_MUTEX_INITIALIZER;

// Created by init_mutex; the initialisers make them fit to be destroyed where it never ran.
pthread_cond_t monitor_condition = PTHREAD_COND_INITIALIZER;
pthread_cond_t memory_condition = PTHREAD_COND_INITIALIZER;
pthread_cond_t command_request_condition = PTHREAD_COND_INITIALIZER;
pthread_cond_t bmc_restart_monitor_condition = PTHREAD_COND_INITIALIZER;
pthread_cond_t watchdog_reset_condition = PTHREAD_COND_INITIALIZER;

namespace {

pthread_condattr_t cond_attr;

struct named_condition {
    pthread_cond_t* condition;
    const char* failure;
};

constexpr named_condition CONDITIONS[] = {
    {&monitor_condition, "monitor condition init failed"},
    {&memory_condition, "memory condition init failed"},
    {&command_request_condition, "command request condition init failed"},
    {&bmc_restart_monitor_condition, "bmc restart monitor condition init failed"},
    {&watchdog_reset_condition, "watchdog reset condition init failed"},
};

} // namespace

int init_mutex() {
    pthread_condattr_init(&cond_attr);
    pthread_condattr_setclock(&cond_attr, CLOCK_MONOTONIC);
    for (const named_condition& entry : CONDITIONS) {
        if (pthread_cond_init(entry.condition, &cond_attr) != 0) {
            std::puts("\n condition init failed");
            printErrLog("initThread ", entry.failure);
            return 1;
        }
    }
    return 0;
}

int destroy() {
    for (pthread_mutex_t* lock :
         {&monitor_lock, &memory_lock, &command_request_lock, &bmc_restart_monitor_lock,
          &watchdog_reset_lock, &info_lock, &cmd_lock})
        pthread_mutex_destroy(lock);
    for (const named_condition& entry : CONDITIONS)
        pthread_cond_destroy(entry.condition);
    return 0;
}

void waitForNextCycle(pthread_cond_t& condition, pthread_mutex_t& lock, long seconds) {
    if (getStopFlag() != 0)
        return;
    timespec until{};
    clock_gettime(CLOCK_MONOTONIC, &until);
    until.tv_sec += seconds;
    pthread_cond_timedwait(&condition, &lock, &until);
}

void waitWhilePaused(pthread_cond_t& condition, pthread_mutex_t& lock) {
    while (getPauseFlag() == 1 && getStopFlag() == 0)
        pthread_cond_wait(&condition, &lock);
}

void wakeUp(pthread_cond_t& condition, pthread_mutex_t& lock) {
    const scoped_lock guard(lock);
    pthread_cond_broadcast(&condition);
}
