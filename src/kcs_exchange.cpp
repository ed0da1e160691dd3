#include "kcs_exchange.h"

#include "include_linux/kcs2_linux.h"
#include "platform/platform.h"
#include "state/flags.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

unsigned int KCS_DATA = 0xCA2;
unsigned int KCS_STATUS = 0xCA3;
int resp_data_len = 0;

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds WAIT_LIMIT{1};
// For a whole exchange, and for the lock before it; a process that is to end waits less.
constexpr std::chrono::seconds PATIENCE{10};
constexpr std::chrono::seconds PATIENCE_UNDER_STOP{3};
// Most bytes are taken within microseconds, for which no sleep is short enough.
constexpr int POLLS_AWAKE = 100;
constexpr std::chrono::microseconds POLL_PAUSE{5};

constexpr const char* LOCK_FILE = "/var/run/vyn.kcs.lock";
constexpr const char* TURN_FILE = "/var/run/vyn.kcs.turn";
constexpr std::chrono::milliseconds LOCK_PAUSE{5};

// How a phase of the exchange ended.
enum class phase { done, timeout, wrong_state };

// A lock among processes, held while it lives.
class file_lock {
  public:
    file_lock(const char* path, steady_clock::time_point until)
        : m_fd(open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
        while (m_fd >= 0 && flock(m_fd, LOCK_EX | LOCK_NB) != 0) {
            if (steady_clock::now() >= until) {
                m_held = false;
                break;
            }
            std::this_thread::sleep_for(LOCK_PAUSE);
        }
    }
    ~file_lock() {
        if (m_fd >= 0)
            close(m_fd);
    }
    file_lock(const file_lock&) = delete;
    file_lock& operator=(const file_lock&) = delete;

    // False when another process holds it for too long. Where no such file can be made there is
    // nothing to be serialised with.
    bool held() const {
        return m_held;
    }

  private:
    const int m_fd;
    bool m_held = true;
};

// The ports' lock against exchanges of other processes. Who waits for it holds the turn: a process
// with one request after the other takes it once and then waits for those that wait.
class ports_lock {
  public:
    explicit ports_lock(std::chrono::seconds patience) {
        const auto until = steady_clock::now() + patience;
        const file_lock turn(TURN_FILE, until);
        if (turn.held())
            m_lock.emplace(LOCK_FILE, until);
    }
    bool held() const {
        return m_lock.has_value() && m_lock->held();
    }

  private:
    std::optional<file_lock> m_lock;
};

void pausePolling(int polls) {
    if (polls >= POLLS_AWAKE)
        std::this_thread::sleep_for(POLL_PAUSE);
}

// Polls until the status bits of `mask` are `wanted`.
int wait_on_status(unsigned char mask, unsigned char wanted, kcs_time exchange_end) {
    const kcs_time until = std::min(steady_clock::now() + WAIT_LIMIT, exchange_end);
    for (int polls = 0;; ++polls) {
        unsigned char status = 0;
        kcs_ReadStatus(&status);
        if ((status & mask) == wanted)
            return 0;
        if (steady_clock::now() >= until)
            return 1;
        pausePolling(polls);
    }
}

// The step after every byte of the write phase.
phase expect_write_state(kcs_time end) {
    if (kcs_WaitOnIBF(end) != 0)
        return phase::timeout;
    unsigned char state = 0;
    kcs_GetState(&state);
    if (state != KCS_STATE_WRITE)
        return phase::wrong_state;
    kcs_ClearOBF();
    return phase::done;
}

phase write_request(const unsigned char* request, int length, int position, kcs_time end) {
    if (kcs_WaitOnIBF(end) != 0)
        return phase::timeout;
    kcs_ClearOBF();
    kcs_WriteCommand(KCS_WRITE_START);
    phase result = expect_write_state(end);
    while (result == phase::done && position != length - 1) {
        kcs_WriteData(request[position]);
        ++position;
        result = expect_write_state(end);
    }
    if (result != phase::done)
        return result;
    kcs_WriteCommand(KCS_WRITE_END);
    result = expect_write_state(end);
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

phase read_response(unsigned char* response, kcs_time end) {
    resp_data_len = 0;
    int taken = 0, polls = 0;
    kcs_time byte_due = steady_clock::now() + WAIT_LIMIT;
    for (;;) {
        if (kcs_WaitOnIBF(end) != 0)
            return phase::timeout;
        unsigned char state = 0;
        kcs_GetState(&state);
        if (state == KCS_STATE_IDLE)
            break;
        if (state != KCS_STATE_READ || taken == KCS_RESPONSE_LIMIT)
            return phase::wrong_state;
        const kcs_time now = steady_clock::now();
        if (kcs_OBFSet() != 0) {
            take_byte(response);
            ++taken;
            polls = 0;
            byte_due = now + WAIT_LIMIT;
        } else if (now >= std::min(byte_due, end)) {
            return phase::timeout;
        } else {
            pausePolling(polls++);
        }
    }
    if (kcs_WaitOnOBF(end) != 0)
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
void recover(kcs_time end) {
    std::puts("\n [kcs] kcs_error:");
    if (kcs_WaitOnIBF(end) != 0)
        return;
    kcs_WriteCommand(KCS_GET_STATUS_ABORT);
    if (kcs_WaitOnIBF(end) != 0)
        return;
    kcs_ClearOBF();
    kcs_WriteData(0x00);
    if (kcs_WaitOnIBF(end) != 0 || !state_is(KCS_STATE_READ) || kcs_WaitOnOBF(end) != 0)
        return;
    unsigned char status_code = 0;
    kcs_ReadData(&status_code);
    kcs_WriteData(KCS_READ);
    if (kcs_WaitOnIBF(end) != 0 || !state_is(KCS_STATE_IDLE) || kcs_WaitOnOBF(end) != 0)
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

int kcs_WaitOnIBF(kcs_time exchange_end) {
    return wait_on_status(KCS_IBF, 0, exchange_end);
}

int kcs_WaitOnOBF(kcs_time exchange_end) {
    return wait_on_status(KCS_OBF, KCS_OBF, exchange_end);
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
    resp_data_len = 0;
    const std::chrono::seconds patience = stopRequested() ? PATIENCE_UNDER_STOP : PATIENCE;
    const ports_lock lock(patience);
    const kcs_time end = steady_clock::now() + patience;
    phase result = phase::timeout; // of a frame that can't be sent: nothing to recover from
    if (lock.held() && kcs_CurLength >= 0 && kcs_CurLength < kcs_ReqLength &&
        kcs_ReqLength <= FRAME_SIZE)
        result = write_request(RequestCmd, kcs_ReqLength, kcs_CurLength, end);
    if (result == phase::done)
        result = read_response(ResponseBuf, end);
    if (result == phase::done)
        return 0;
    if (result == phase::wrong_state)
        recover(end);
    std::puts("\n [kcs] kcs_error_exit:");
    return 1;
}
