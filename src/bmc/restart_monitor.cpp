#include "bmc/restart_monitor.h"

#include "bmc/request.h"
#include "config/logs.h"
#include "state/flags.h"
#include "state/schedule.h"

namespace {

constexpr long PERIOD = 60;
constexpr BYTE get_clean_flag = 0x00;
constexpr BYTE set_clean_flag = 0x01;

bmc_response restartClean(BYTE operation) {
    return askBmc(NETFN_OEM, CMD_OEM_GENERAL, {OEM_RESTART_CLEAN, operation});
}

void checkRestart() {
    const bmc_response flag = restartClean(get_clean_flag);
    if (!flag.ok()) {
        printErrLog("get bmc restart clean", "command fail");
        return;
    }
    if (flag.length == 0 || flag.data[0] != 0)
        return;
    static_flag = 1;
    if (!restartClean(set_clean_flag).ok())
        printErrLog("set bmc restart clean", "command fail");
}

} // namespace

void* bmc_restart_monitor_handler(void* /*arg*/) {
    while (getStopFlag() == 0) {
        const scoped_lock guard = bmc_restart_monitor_schedule.cycle();
        bmc_restart_monitor_schedule.waitWhilePaused();
        tryBmcAgain();
        if (!stopRequested()) // while the service was paused
            checkRestart();
        bmc_restart_monitor_schedule.waitForNextCycle(PERIOD);
    }
    return nullptr;
}
