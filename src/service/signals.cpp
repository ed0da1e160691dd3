#include "service/signals.h"

#include "service/control.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <pthread.h>
#include <semaphore.h>

namespace {

constexpr int ROUTED[] = {SIGHUP, SIGTERM, SIGINT};

sem_t noted_count;
std::atomic<bool> noted[NSIG];
static_assert(std::atomic<bool>::is_always_lock_free, "written by a signal handler");

extern "C" void note_signal(int sig) {
    const int saved_errno = errno;
    noted[sig] = true;
    sem_post(&noted_count);
    errno = saved_errno;
}

void* signal_thread(void*) {
    for (;;) {
        while (sem_wait(&noted_count) == -1 && errno == EINTR) {
        }
        for (const int sig : ROUTED)
            if (noted[sig].exchange(false))
                signal_handler(sig);
    }
}

} // namespace

int routeSignals() {
    if (sem_init(&noted_count, 0, 0) != 0)
        return 1;
    for (const int sig : ROUTED) {
        struct sigaction action {};
        action.sa_handler = note_signal;
        sigemptyset(&action.sa_mask);
        if (sigaction(sig, &action, nullptr) != 0)
            return 1;
    }
    return 0;
}

int startSignalThread() {
    pthread_t thread;
    if (pthread_create(&thread, nullptr, signal_thread, nullptr) != 0)
        return 1;
    pthread_detach(thread);
    return 0;
}
