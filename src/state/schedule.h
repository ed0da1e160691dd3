// The locks of the service, and the schedules of its worker threads.
// Order, outermost first: a thread's own schedule, info_lock, cmd_lock, ipmi_lock.
#pragma once

#include <chrono>
#include <pthread.h>

extern pthread_mutex_t info_lock; // start-up, pause, resume and stop sequences
extern pthread_mutex_t cmd_lock;  // a whole parameter upload

class scoped_lock {
  public:
    explicit scoped_lock(pthread_mutex_t& mutex) : m_mutex(mutex) {
        pthread_mutex_lock(&mutex);
    }
    ~scoped_lock() {
        pthread_mutex_unlock(&m_mutex);
    }
    scoped_lock(const scoped_lock&) = delete;
    scoped_lock& operator=(const scoped_lock&) = delete;

  private:
    pthread_mutex_t& m_mutex;
};

// What a worker waits on between two cycles: its lock, which it holds for a whole cycle, and its
// condition variable, measured on the monotonic clock.
class schedule {
  public:
    schedule(pthread_mutex_t& lock, pthread_cond_t& condition, const char* name) noexcept
        : m_lock(lock), m_condition(condition), m_name(name) {}

    // One cycle of the worker: holds the lock while it lives.
    scoped_lock cycle() {
        return scoped_lock(m_lock);
    }

    // The waits release the lock meanwhile. They return at once when the stop flag is set, so that
    // a stop that came just before is not slept through, and end at a wake-up.
    void waitForNextCycle(long seconds);
    void waitUntil(std::chrono::steady_clock::time_point until);
    // Waits without a limit while the pause flag is 1 and the stop flag is not set. Returns whether
    // it waited at all.
    bool waitWhilePaused();

    // Keeps the worker from its next cycle until the process ends.
    void hold() {
        pthread_mutex_lock(&m_lock);
    }

    // Wakes the worker, taking its lock: not for one that holds a schedule's lock itself.
    void wake();

    bool initialise(const pthread_condattr_t& attributes); // false when that fails
    void destroy();
    const char* name() const { // as the error log names it
        return m_name;
    }

  private:
    pthread_mutex_t& m_lock;
    pthread_cond_t& m_condition;
    const char* m_name;
    bool m_initialised = false; // a command-line process needs no condition variable
};

extern schedule monitor_schedule, memory_schedule, command_request_schedule,
    bmc_restart_monitor_schedule, watchdog_reset_schedule;

// Creates the condition variables of the schedules, in the order above. Returns the first schedule
// whose condition variable can't be made, or null.
const schedule* initialiseSchedules();

// Destroys the seven locks and the five condition variables. Returns 0.
int destroy();
