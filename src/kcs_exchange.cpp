#include "kcs_exchange.h"

#include "kcs_linux.h"
#include "platform/platform.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <pthread.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

using std::chrono::steady_clock;

constexpr useconds_t POLL_MICROSECONDS = 5;
constexpr std::chrono::seconds WAIT_LIMIT{1};

// How a phase of the exchange ended.
enum class phase { done, timeout, wrong_state };

// Set by the handler, which may run on any thread.
std::atomic<int> isTimeout{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler sets isTimeout");

struct sigaction sa;
itimerval timer;

void timer_handler(int /*signum*/) {
    isTimeout = 1;
}

void install_timer_handler() {
    sa.sa_handler = timer_handler;
    sa.sa_flags = 0;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGALRM, &sa, nullptr);
}

void init_timer_1S() {
    install_timer_handler();
    timer = {};
    timer.it_value.tv_sec = WAIT_LIMIT.count();
}

void init_timer_0S() {
    install_timer_handler();
    timer = {};
}

// Polls until the status bits of `mask` are `wanted`.
int wait_on_status(unsigned char mask, unsigned char wanted) {
    isTimeout = 0;
    init_timer_1S();
    setitimer(ITIMER_REAL, &timer, nullptr);
    for (;;) {
        unsigned char status = 0;
        kcs_ReadStatus(&status);
        if ((status & mask) == wanted)
            break;
        usleep(POLL_MICROSECONDS);
        if (isTimeout != 0)
            return 1;
    }
    init_timer_0S();
    setitimer(ITIMER_REAL, &timer, nullptr);
    return 0;
}

// Lets SIGALRM through to this thread while it lives: a worker may have every signal blocked, and
// the waits would never end.
class alarm_unblocked {
  public:
    alarm_unblocked() {
        sigset_t alarm;
        sigemptyset(&alarm);
        sigaddset(&alarm, SIGALRM);
        pthread_sigmask(SIG_UNBLOCK, &alarm, &before);
    }
    ~alarm_unblocked() {
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
    alarm_unblocked(const alarm_unblocked&) = delete;
    alarm_unblocked& operator=(const alarm_unblocked&) = delete;

  private:
    sigset_t before;
};

// The step after every byte of the write phase.
phase expect_write_state() {
    if (kcs_WaitOnIBF() != 0)
        return phase::timeout;
    unsigned char state = 0;
    kcs_GetState(&state);
    if (state != KCS_STATE_WRITE)
        return phase::wrong_state;
    kcs_ClearOBF();
    return phase::done;
}

phase write_request(const unsigned char* request, int length, int position) {
    if (kcs_WaitOnIBF() != 0)
        return phase::timeout;
    kcs_ClearOBF();
    kcs_WriteCommand(KCS_WRITE_START);
    phase result = expect_write_state();
    while (result == phase::done && position != length - 1) {
        kcs_WriteData(request[position]);
        ++position;
        result = expect_write_state();
    }
    if (result != phase::done)
        return result;
    kcs_WriteCommand(KCS_WRITE_END);
    result = expect_write_state();
    if (result == phase::done)
        kcs_WriteData(request[position]);
    return result;
}

// Takes one response byte and acknowledges it; what the frame can't hold is dropped.
void take_byte(unsigned char* response) {
    unsigned char data = 0;
    kcs_ReadData(&data);
    if (resp_data_len < FRAME_SIZE)
        response[resp_data_len++] = data;
    kcs_WriteData(KCS_READ);
}

phase read_response(unsigned char* response) {
    resp_data_len = 0;
    int taken = 0;
    auto last_byte = steady_clock::now();
    for (;;) {
        if (kcs_WaitOnIBF() != 0)
            return phase::timeout;
        unsigned char state = 0;
        kcs_GetState(&state);
        if (state == KCS_STATE_IDLE)
            break;
        if (state != KCS_STATE_READ || taken == KCS_RESPONSE_LIMIT)
            return phase::wrong_state;
        if (kcs_OBFSet() != 0) {
            take_byte(response);
            ++taken;
            last_byte = steady_clock::now();
        } else if (steady_clock::now() - last_byte >= WAIT_LIMIT) {
            return phase::timeout;
        } else {
            usleep(POLL_MICROSECONDS);
        }
    }
    if (kcs_WaitOnOBF() != 0)
        return phase::timeout;
    kcs_ClearOBF();
    return phase::done;
}

bool state_is(unsigned char wanted) {
    unsigned char state = 0;
    kcs_GetState(&state);
    return state == wanted;
}

// Brings the interface back to IDLE; stops at the first step that the BMC does not follow.
void recover() {
    std::puts("\n [kcs] kcs_error:");
    if (kcs_WaitOnIBF() != 0)
        return;
    kcs_WriteCommand(KCS_GET_STATUS_ABORT);
    if (kcs_WaitOnIBF() != 0)
        return;
    kcs_ClearOBF();
    kcs_WriteData(0x00);
    if (kcs_WaitOnIBF() != 0 || !state_is(KCS_STATE_READ) || kcs_WaitOnOBF() != 0)
        return;
    unsigned char status_code = 0;
    kcs_ReadData(&status_code);
    kcs_WriteData(KCS_READ);
    if (kcs_WaitOnIBF() != 0 || !state_is(KCS_STATE_IDLE) || kcs_WaitOnOBF() != 0)
        return;
    kcs_ClearOBF();
}

} // namespace

void kcs_ReadStatus(unsigned char* status) {
    *status = platform::inb(static_cast<std::uint16_t>(KCS_STATUS));
}

void kcs_GetState(unsigned char* state) {
    kcs_ReadStatus(state);
    *state &= KCS_STATE_MASK;
}

void kcs_ReadData(unsigned char* data) {
    *data = platform::inb(static_cast<std::uint16_t>(KCS_DATA));
}

void kcs_WriteData(unsigned char data) {
    platform::outb(data, static_cast<std::uint16_t>(KCS_DATA));
}

void kcs_WriteCommand(unsigned char cmd) {
    platform::outb(cmd, static_cast<std::uint16_t>(KCS_STATUS));
}

int kcs_WaitOnIBF() {
    return wait_on_status(KCS_IBF, 0);
}

int kcs_WaitOnOBF() {
    return wait_on_status(KCS_OBF, KCS_OBF);
}

void kcs_ClearOBF() {
    unsigned char status = 0;
    kcs_ReadStatus(&status);
    if ((status & KCS_OBF) != 0)
        kcs_ReadData(&status);
}

int kcs_OBFSet() {
    unsigned char status = 0;
    kcs_ReadStatus(&status);
    return status & KCS_OBF;
}

int kcs_exchange(unsigned char* RequestCmd, unsigned char* ResponseBuf, int kcs_ReqLength,
                 int kcs_CurLength) {
    const alarm_unblocked unblocked;
    resp_data_len = 0;
    phase result = phase::timeout; // of a frame that can't be sent: nothing to recover from
    if (kcs_CurLength >= 0 && kcs_CurLength < kcs_ReqLength && kcs_ReqLength <= FRAME_SIZE)
        result = write_request(RequestCmd, kcs_ReqLength, kcs_CurLength);
    if (result == phase::done)
        result = read_response(ResponseBuf);
    if (result == phase::done)
        return 0;
    if (result == phase::wrong_state)
        recover();
    std::puts("\n [kcs] kcs_error_exit:");
    return 1;
}
