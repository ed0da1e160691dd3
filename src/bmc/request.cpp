#include "bmc/request.h"

#include <atomic>
#include <cstdio>

namespace {

constexpr BYTE TIMED_OUT = 0xC3;

thread_local bool away = false;
std::atomic<bool> was_away{false};

} // namespace

bmc_response askBmc(BYTE netFn, BYTE command, const BYTE* data, std::size_t length) {
    bmc_response response;
    if (away)
        return response;
    response.code = runIpmiCmd(BMC_ADDRESS, netFn, command, data, static_cast<int>(length),
                               response.data.data(), &response.length);
    away = transportFailed() || response.code == TIMED_OUT;
    if (away)
        was_away = true;
    return response;
}

bmc_response askBmc(BYTE netFn, BYTE command, std::initializer_list<BYTE> data) {
    return askBmc(netFn, command, data.begin(), data.size());
}

bool bmcAway() {
    return away;
}

void tryBmcAgain() {
    away = false;
}

void tellUnreached() {
    if (was_away)
        std::fputs("BMC not reached\n", stderr);
}
