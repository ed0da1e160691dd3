#include "bmc/watchdog.h"

#include "bmc/request.h"
#include "config/logs.h"
#include "state/flags.h"
#include "state/schedule.h"

std::atomic<int> watchdogEnabled{0};
std::atomic<int> watchdogCmd{CMD_OEM_WATCHDOG};
std::atomic<int> watchdogResetFreq{WATCHDOG_RESET_FREQ_START};

namespace {

constexpr BYTE restart_timer = 0x01;
constexpr BYTE get_state = 0x02;
constexpr BYTE set_timer = 0x03;
constexpr BYTE timer_seconds = 0x3C;
constexpr BYTE timer_disabled = 0x00;
constexpr BYTE invalid_command = 0xC1; // IPMI v2.0, 5.2

std::atomic<bool> armed{false}; // the timer runs, or may, and this process keeps it running

bmc_response send(std::initializer_list<BYTE> data) {
    return askBmc(NETFN_OEM, static_cast<BYTE>(watchdogCmd.load()), data);
}

// Keeps the timer running. A stopping process sets the stop flag before it switches the timer off:
// nothing is sent under that flag, and what was on its way is taken back.
void keepRunning() {
    if (getWatchdog() != 0) {
        armed = true;
    } else if (getStopFlag() == 0) {
        setWatchdog(1);
        if (getStopFlag() != 0)
            switchWatchdogOff();
    }
    if (getStopFlag() == 0 && !send({restart_timer}).ok())
        printErrLog("watchdog reset", "command fail");
}

} // namespace

int checkWatchdog() {
    watchdogEnabled = 0;
    for (const BYTE command : {CMD_OEM_WATCHDOG, CMD_OEM_WATCHDOG_OLD})
        for (int tries = 0; watchdogEnabled == 0 && tries < 2; ++tries) { // one may be lost
            tryBmcAgain();
            if (askBmc(NETFN_OEM, command, {get_state}).ok()) {
                watchdogCmd = command;
                watchdogEnabled = 1;
            } else if (!bmcAway()) {
                break;
            }
        }
    return watchdogEnabled;
}

void setWatchdog(int enable) {
    const bool is_sent = !bmcAway();
    const BYTE code = send({set_timer, enable > 0 ? timer_seconds : timer_disabled, 0x00}).code;
    if (code != 0)
        printErrLog("set watchdog timer", "command fail");
    if (code == 0 || code == invalid_command)
        armed = code == 0 && enable > 0;
    else if (enable > 0 && is_sent && bmcAway()) // the answer was lost: the worst is assumed
        armed = true;
}

void switchWatchdogOff() {
    for (int tries = 0; tries < 2; ++tries) {
        tryBmcAgain();
        setWatchdog(0);
        if (!bmcAway())
            return;
    }
}

bool watchdogArmed() {
    return armed;
}

BYTE getWatchdog() {
    const bmc_response state = send({get_state});
    if (!state.ok())
        printErrLog("get watchdog timer", "command fail");
    return state.ok() ? state.data[0] : BYTE{0};
}

void* watchdog_reset_handler(void* /*arg*/) {
    while (getStopFlag() == 0) {
        const scoped_lock guard = watchdog_reset_schedule.cycle();
        tryBmcAgain();
        keepRunning();
        // A timer that runs is kept running, even where the probe's answer was lost.
        const bool unprobed = armed && watchdogResetFreq == WATCHDOG_RESET_FREQ_ABSENT;
        watchdog_reset_schedule.waitForNextCycle(unprobed ? WATCHDOG_RESET_FREQ_ENABLED
                                                          : watchdogResetFreq.load());
    }
    return nullptr;
}
