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

std::atomic<bool> armed{false}; // this process has switched the timer on

bmc_response send(std::initializer_list<BYTE> data) {
    return askBmc(NETFN_OEM, static_cast<BYTE>(watchdogCmd.load()), data);
}

// Keeps the timer running. A stopping process sets the stop flag before it switches the timer off:
// nothing is sent under that flag, and what was on its way is taken back.
void keepRunning() {
    if (getWatchdog() == 0 && getStopFlag() == 0) {
        setWatchdog(1);
        if (getStopFlag() != 0)
            setWatchdog(0);
    }
    if (getStopFlag() == 0 && !send({restart_timer}).ok())
        printErrLog("watchdog reset", "command fail");
}

} // namespace

int checkWatchdog() {
    watchdogEnabled = 0;
    for (const BYTE command : {CMD_OEM_WATCHDOG, CMD_OEM_WATCHDOG_OLD}) {
        tryBmcAgain(); // it is not asked again later
        if (askBmc(NETFN_OEM, command, {get_state}).ok()) {
            watchdogCmd = command;
            watchdogEnabled = 1;
            break;
        }
    }
    return watchdogEnabled;
}

void setWatchdog(int enable) {
    if (!send({set_timer, enable > 0 ? timer_seconds : timer_disabled, 0x00}).ok())
        printErrLog("set watchdog timer", "command fail");
    else
        armed = enable > 0;
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
        watchdog_reset_schedule.waitForNextCycle(watchdogResetFreq);
    }
    return nullptr;
}
