#include "state/schedule.h"

#include "state/flags.h"

#include <ctime>
#include <initializer_list>

pthread_mutex_t info_lock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t cmd_lock = PTHREAD_MUTEX_INITIALIZER;

namespace {

pthread_mutex_t monitor_lock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t memory_lock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t command_request_lock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t bmc_restart_monitor_lock = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t watchdog_reset_lock = PTHREAD_MUTEX_INITIALIZER;

// Made by initialiseSchedules.
pthread_cond_t monitor_condition, memory_condition, command_request_condition,
    bmc_restart_monitor_condition, watchdog_reset_condition;

pthread_condattr_t cond_attr;

} // namespace

schedule monitor_schedule(monitor_lock, monitor_condition, "monitor");
schedule memory_schedule(memory_lock, memory_condition, "memory");
schedule command_request_schedule(command_request_lock, command_request_condition,
                                  "command request");
schedule bmc_restart_monitor_schedule(bmc_restart_monitor_lock, bmc_restart_monitor_condition,
                                      "bmc restart monitor");
schedule watchdog_reset_schedule(watchdog_reset_lock, watchdog_reset_condition, "watchdog reset");

namespace {

schedule* const SCHEDULES[] = {&monitor_schedule, &memory_schedule, &command_request_schedule,
                               &bmc_restart_monitor_schedule, &watchdog_reset_schedule};

} // namespace

void schedule::waitForNextCycle(long seconds) {
    waitUntil(std::chrono::steady_clock::now() + std::chrono::seconds(seconds));
}

void schedule::waitUntil(std::chrono::steady_clock::time_point until) {
    if (getStopFlag() != 0)
        return;
    const auto since_start = until.time_since_epoch();
    const auto seconds = std::chrono::floor<std::chrono::seconds>(since_start);
    const timespec deadline{
        static_cast<time_t>(seconds.count()),
        static_cast<long>(std::chrono::nanoseconds(since_start - seconds).count())};
    pthread_cond_timedwait(&m_condition, &m_lock, &deadline);
}

bool schedule::waitWhilePaused() {
    bool waited = false;
    while (getPauseFlag() == 1 && getStopFlag() == 0) {
        waited = true;
        pthread_cond_wait(&m_condition, &m_lock);
    }
    return waited;
}

void schedule::wake() {
    const scoped_lock guard(m_lock);
    pthread_cond_broadcast(&m_condition);
}

bool schedule::initialise(const pthread_condattr_t& attributes) {
    m_initialised = pthread_cond_init(&m_condition, &attributes) == 0;
    return m_initialised;
}

void schedule::destroy() {
    pthread_mutex_destroy(&m_lock);
    if (m_initialised)
        pthread_cond_destroy(&m_condition);
}

const schedule* initialiseSchedules() {
    pthread_condattr_init(&cond_attr);
    pthread_condattr_setclock(&cond_attr, CLOCK_MONOTONIC);
    for (schedule* each : SCHEDULES)
        if (!each->initialise(cond_attr))
            return each;
    return nullptr;
}

int destroy() {
    for (schedule* each : SCHEDULES)
        each->destroy();
    pthread_mutex_destroy(&info_lock);
    pthread_mutex_destroy(&cmd_lock);
    return 0;
}
