#include "bmc/watchdog.h"

#include "config/logs.h"
#include "state/flags.h"
#include "state/locks.h"
#include "smipmi.h"

std::atomic<int> watchdogEnabled{0};
std::atomic<int> watchdogCmd{CMD_OEM_WATCHDOG};
std::atomic<int> watchdogResetFreq{WATCHDOG_RESET_FREQ_START};

namespace {

constexpr BYTE restart_timer = 0x01;
constexpr BYTE get_state = 0x02;
constexpr BYTE set_timer = 0x03;
constexpr BYTE timer_seconds = 0x3C;
constexpr BYTE timer_disabled = 0x00;

// Sends one request with the command number given; the state byte, if there is one, goes to
// `state`. Returns the completion code.
template <std::size_t N>
BYTE send(int command, const BYTE (&data)[N], BYTE* state = nullptr) {
    BYTE response[RESPONSE_SIZE] = {};
    DWORD length = 0;
    const BYTE code = runIpmiCmd(BMC_ADDRESS, NETFN_OEM, static_cast<BYTE>(command), data,
                                 static_cast<int>(N), response, &length);
    if (state != nullptr)
        *state = code == 0 && length > 0 ? response[0] : BYTE{0};
    return code;
}

} // namespace

int checkWatchdog() {
    watchdogEnabled = 0;
    for (const BYTE command : {CMD_OEM_WATCHDOG, CMD_OEM_WATCHDOG_OLD}) {
        if (send(command, {get_state}) == 0) {
            watchdogCmd = command;
            watchdogEnabled = 1;
            break;
        }
    }
    return watchdogEnabled;
}

void setWatchdog(int enable) {
    const BYTE seconds = enable > 0 ? timer_seconds : timer_disabled;
    if (send(watchdogCmd, {set_timer, seconds, 0x00}) != 0)
        printErrLog("set watchdog timer", "command fail");
}

BYTE getWatchdog() {
    BYTE state = 0;
    if (send(watchdogCmd, {get_state}, &state) != 0)
        printErrLog("get watchdog timer", "command fail");
    return state;
}

void* watchdog_reset_handler(void* /*arg*/) {
    while (getStopFlag() == 0) {
        const scoped_lock guard(watchdog_reset_lock);
        // A stopping process sets the stop flag before it switches the timer off: a timer found
        // off under that flag was meant to be.
        if (getWatchdog() == 0 && getStopFlag() == 0)
            setWatchdog(1);
        if (send(watchdogCmd, {restart_timer}) != 0)
            printErrLog("watchdog reset", "command fail");
        waitForNextCycle(watchdog_reset_condition, watchdog_reset_lock, watchdogResetFreq);
    }
    return nullptr;
}
