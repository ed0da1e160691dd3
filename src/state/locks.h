// The locks and condition variables of the worker threads.
// Order, outermost first: a thread's own schedule lock, info_lock, cmd_lock, ipmi_lock.
#pragma once

#include <pthread.h>

extern pthread_mutex_t monitor_lock, memory_lock, command_request_lock;
extern pthread_mutex_t bmc_restart_monitor_lock, watchdog_reset_lock;
extern pthread_mutex_t info_lock; // start-up, pause, resume and stop sequences
extern pthread_mutex_t cmd_lock;  // a whole parameter upload

extern pthread_cond_t monitor_condition, memory_condition, command_request_condition;
extern pthread_cond_t bmc_restart_monitor_condition, watchdog_reset_condition;

// Creates the condition variables, measured on the monotonic clock. Returns 1 at the first that
// fails, which standard output and the error log name, else 0.
int init_mutex();

// Destroys the seven locks and the five condition variables. Returns 0.
int destroy();

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

// Waits on the condition, with its lock held, until `seconds` from now or a wake-up; returns at
// once when the stop flag is set, so that a stop that came just before is not slept through.
void waitForNextCycle(pthread_cond_t& condition, pthread_mutex_t& lock, long seconds);

// Waits on the condition, with its lock held and without a time-out, while the pause flag is 1 and
// the stop flag is not set.
void waitWhilePaused(pthread_cond_t& condition, pthread_mutex_t& lock);

// Wakes whoever waits on the condition, taking its lock.
void wakeUp(pthread_cond_t& condition, pthread_mutex_t& lock);
