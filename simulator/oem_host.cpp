#include "oem_host.h"

#include <algorithm>

namespace bmcsim {

int64_t secondsLeft(const Watchdog& watchdog, const Ledger& ledger) {
    return (watchdog.deadlineMs - ledger.nowMs + 999) / 1000;
}

void tickWatchdog(Watchdog& watchdog, Ledger& ledger) {
    if (!watchdog.running || ledger.nowMs < watchdog.deadlineMs)
        return;
    watchdog.running = false;
    watchdog.expired++;
    trace(ledger, "watchdog expired");
}

static uint8_t setWatchdog(Watchdog& watchdog, const Ledger& ledger, const Bytes& data) {
    if (data.size() != 3)
        return CC_LENGTH_INVALID;
    watchdog.period = data[1];
    watchdog.running = data[1] != 0;
    watchdog.deadlineMs = ledger.nowMs + 1000 * watchdog.period;
    watchdog.enabled += watchdog.running ? 1 : 0;
    return CC_OK;
}

uint8_t watchdogCommand(Watchdog& watchdog, Ledger& ledger, uint8_t cmd, const Bytes& data,
                        Bytes& out) {
    const bool answers = cmd == WATCHDOG_COMMAND ? watchdog.answersNew : watchdog.answersOld;
    if (!answers)
        return CC_INVALID_COMMAND;
    if (data.empty())
        return CC_LENGTH_INVALID;
    tickWatchdog(watchdog, ledger);
    if (data[0] == 0x03)
        return setWatchdog(watchdog, ledger, data);
    if (data.size() != 1)
        return CC_LENGTH_INVALID;
    if (data[0] == 0x02) {
        const int64_t left = watchdog.running ? secondsLeft(watchdog, ledger) : 0;
        out = {static_cast<uint8_t>(watchdog.running ? 1 : 0), watchdog.period, 0,
               static_cast<uint8_t>(left), 0};
        return CC_OK;
    }
    if (data[0] != 0x01)
        return CC_INVALID_FIELD;
    if (!watchdog.running)
        return CC_WRONG_STATE;
    watchdog.deadlineMs = ledger.nowMs + 1000 * watchdog.period;
    watchdog.resets++;
    return CC_OK;
}

static uint8_t restartFlag(HostPanel& panel, const Bytes& data, Bytes& out) {
    if (data.size() != 2)
        return CC_LENGTH_INVALID;
    if (data[1] > 1)
        return CC_INVALID_FIELD;
    if (data[1] == 1)
        panel.restartClean = 1;
    else
        out = {panel.restartClean};
    return CC_OK;
}

static bool positionExists(const Position& position) {
    return position.aoc <= MAX_AOC && position.group <= MAX_GROUP && position.slot <= MAX_SLOT;
}

static uint8_t queryPosition(HostPanel& panel, Ledger& ledger, const Bytes& data, Bytes& out) {
    constexpr size_t SERIAL_AT = 6;
    constexpr size_t ANSWER_SIZE = 26;
    const Position position = {data[2], data[5], data[3]};
    if (!positionExists(position) || data[4] != 0x01 || data[6] != 0x00 || data[7] != 0x19) {
        complain(ledger, "NVMe position query: " + hexText(data));
        return CC_INVALID_FIELD;
    }
    out.assign(ANSWER_SIZE, 0);
    const auto found = panel.bays.find(position);
    if (found == panel.bays.end())
        return CC_OK;
    std::fill(out.begin() + SERIAL_AT, out.end(), static_cast<uint8_t>(' '));
    std::copy_n(found->second.serial.begin(), std::min<size_t>(found->second.serial.size(), 20),
                out.begin() + SERIAL_AT);
    return CC_OK;
}

static uint8_t switchLed(HostPanel& panel, Ledger& ledger, const Bytes& data) {
    const auto found = panel.bays.find({data[2], data[5], data[3]});
    if (found == panel.bays.end() || data[4] > 1) {
        complain(ledger, "locate request for no drive: " + hexText(data));
        return CC_INVALID_FIELD;
    }
    found->second.led = data[4];
    found->second.located++;
    return CC_OK;
}

uint8_t panelCommand(HostPanel& panel, Ledger& ledger, const Bytes& data, Bytes& out) {
    if (data.size() < 2)
        return CC_LENGTH_INVALID;
    if (data[0] == 0xA9)
        return restartFlag(panel, data, out);
    if (data[0] != 0x6C || data[1] > 1)
        return CC_INVALID_FIELD;
    if (data.size() != (data[1] == 0 ? 8U : 6U))
        return CC_LENGTH_INVALID;
    return data[1] == 0 ? queryPosition(panel, ledger, data, out) : switchLed(panel, ledger, data);
}

} // namespace bmcsim
