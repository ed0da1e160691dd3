// OEM facilities that watch over the host (NetFn 0x30): the watchdog (command 0xB6 or 0xB3), the
// restart-clean flag and the NVMe positions with their locate LEDs (both command 0x70).
//
// Watchdog data: 01 restart the timer; 02 get state: running, period, seconds left; 03 t 00 run
// with a period of t seconds, stop when t is 0.
// Command 0x70: A9 00 get the flag, A9 01 set it; 6C 00 aoc slot 01 group 00 19 query a position:
// 26 bytes, the serial number from byte 6, a zero there when the position is empty; 6C 01 aoc
// slot state group switch its LED.
#pragma once

#include "core.h"

#include <map>
#include <tuple>

namespace bmcsim {

constexpr uint8_t WATCHDOG_COMMAND = 0xB6;
constexpr uint8_t WATCHDOG_COMMAND_OLD = 0xB3;

struct Watchdog {
    bool answersNew = true;  // to 0xB6
    bool answersOld = false; // to 0xB3
    bool running = false;
    uint8_t period = 0;     // seconds
    int64_t deadlineMs = 0; // while running
    size_t enabled = 0, resets = 0, expired = 0;
};

// Expires the timer when its time is over. Call it before looking at the state.
void tickWatchdog(Watchdog& watchdog, Ledger& ledger);
// Of a running watchdog, rounded up.
int64_t secondsLeft(const Watchdog& watchdog, const Ledger& ledger);
uint8_t watchdogCommand(Watchdog& watchdog, Ledger& ledger, uint8_t cmd, const Bytes& data,
                        Bytes& out);

struct Position {
    int aoc = 0, group = 0, slot = 0;
    bool operator<(const Position& other) const {
        return std::tie(aoc, group, slot) < std::tie(other.aoc, other.group, other.slot);
    }
};

struct Bay {
    std::string serial; // as the answer holds it, at most 20 bytes
    int led = -1;       // the last state asked for, -1 none
    size_t located = 0;
};

constexpr int MAX_AOC = 1;
constexpr int MAX_GROUP = 7;
constexpr int MAX_SLOT = 23;

struct HostPanel {
    uint8_t restartClean = 0; // 0 after a start of the BMC until the agent sets it
    std::map<Position, Bay> bays;
};

// Command 0x70.
uint8_t panelCommand(HostPanel& panel, Ledger& ledger, const Bytes& data, Bytes& out);

} // namespace bmcsim
