// The BMC's OEM host watchdog (OEM command 0x30/0xB6, 0x30/0xB3 on older firmware).
#pragma once

#include "system_info.h"

extern std::atomic<int> watchdogEnabled;   // 1 when the BMC answered the probe
extern std::atomic<int> watchdogCmd;       // command number: 0xB6 or 0xB3
extern std::atomic<int> watchdogResetFreq; // seconds between two resets

constexpr int WATCHDOG_RESET_FREQ_START = 30;
constexpr int WATCHDOG_RESET_FREQ_ENABLED = 5;
constexpr int WATCHDOG_RESET_FREQ_ABSENT = 99999999;

// Probes the BMC, setting watchdogEnabled and watchdogCmd; returns watchdogEnabled.
int checkWatchdog();

// Switches the BMC's timer on (60 seconds) or off. A failure is logged.
void setWatchdog(int enable);

// Switches it off, once more if the answer is lost.
void switchWatchdogOff();

// Whether the timer runs, or may, for all that this process knows.
bool watchdogArmed();

// The timer's state byte: 0 when it does not run or the request failed.
BYTE getWatchdog();

// Thread body: keeps the timer running until the stop flag is set.
void* watchdog_reset_handler(void* arg);
