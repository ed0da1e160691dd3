#include "bmc/restart_monitor.h"

#include "config/logs.h"
#include "state/flags.h"
#include "state/locks.h"
#include "smipmi.h"

namespace {

constexpr long PERIOD = 60;
constexpr BYTE get_clean_flag = 0x00;
constexpr BYTE set_clean_flag = 0x01;

// Sends a restart-clean request; the response data go to `response`, RESPONSE_SIZE bytes.
BYTE restartClean(BYTE operation, BYTE* response, DWORD* length) {
    const BYTE data[] = {OEM_RESTART_CLEAN, operation};
    return runIpmiCmd(BMC_ADDRESS, NETFN_OEM, CMD_OEM_GENERAL, data, sizeof data, response, length);
}

void checkRestart() {
    BYTE response[RESPONSE_SIZE] = {};
    DWORD length = 0;
    if (restartClean(get_clean_flag, response, &length) != 0) {
        printErrLog("get bmc restart clean", "command fail");
        return;
    }
    if (length == 0 || response[0] != 0)
        return;
    static_flag = 1;
    if (restartClean(set_clean_flag, response, &length) != 0)
        printErrLog("set bmc restart clean", "command fail");
}

} // namespace

void* bmc_restart_monitor_handler(void* /*arg*/) {
    while (getStopFlag() == 0) {
        const scoped_lock guard(bmc_restart_monitor_lock);
        waitWhilePaused(bmc_restart_monitor_condition, bmc_restart_monitor_lock);
        checkRestart();
        waitForNextCycle(bmc_restart_monitor_condition, bmc_restart_monitor_lock, PERIOD);
    }
    return nullptr;
}
