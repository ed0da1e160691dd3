// The OEM facilities (NetFn 0x30): files for download, the watchdog, the restart-clean flag and the
// NVMe positions with their locate LEDs. Numbers are little-endian.
//
// Command A0, files: 09 tells what the firmware can do, 0B is the BIOS drive map.
//   05 id                      prepare: reservation id (2 bytes)
//   06 rid rid                 status: 01 still preparing, else 00 and the length (4 bytes)
//   07 rid rid offset(4) n(2)  read: up to n bytes
//   08 rid rid                 done
// Command B6 or B3, the watchdog:
//   01         restart the timer
//   02         get the state: running, period, 0, seconds left, 0
//   03 t 00    run with a period of t seconds; stop when t is 0
// Command 70:
//   A9 00, A9 01                     get the restart-clean flag, set it
//   6C 00 aoc slot 01 group 00 19    query a position: 26 bytes, the serial number from byte 6, a
//                                    zero there when the position is empty
//   6C 01 aoc slot state group       switch its LED
#pragma once

#include "core.h"

#include <map>
#include <tuple>

namespace bmcsim {

constexpr uint8_t FILE_CAPABILITY = 0x09;
constexpr uint8_t FILE_DRIVE_MAP = 0x0B;

struct OfferedFile {
    Bytes content;
    int64_t reportedLength = -1; // -1: the true one
    size_t preparingPolls = 1;   // how often the status is "still preparing"
    size_t prepared = 0, reads = 0, done = 0;
};

struct Files {
    std::map<uint8_t, OfferedFile> offered;
    uint16_t reservation = 0; // the current one; 0 none
    uint8_t reserved = 0;     // its file
    size_t pollsLeft = 0;
};

Bytes fileCommand(Files& files, Ledger& ledger, const Bytes& data);

// A capability file of `size` bytes: byte 27 bit 2 says that NVMe is supported.
Bytes capabilityFile(bool nvme, size_t size);

struct MappedDrive {
    std::string serial; // at most 21 characters, longer ones are cut
    uint16_t slot = 0;
};
// A drive map: 16 bytes of head, the count at 7..8, then 108 bytes a drive: the slot at 28..29, the
// serial at 75..95.
Bytes driveMapFile(const std::vector<MappedDrive>& drives);

constexpr uint8_t WATCHDOG_COMMAND = 0xB6;

struct Watchdog {
    bool answersNew = true;  // to 0xB6
    bool answersOld = false; // to 0xB3
    bool running = false;
    uint8_t period = 0;     // seconds
    int64_t deadlineMs = 0; // while running
    size_t enabled = 0, resets = 0, expired = 0;
};

// Expires the timer when its time is over; call it before looking at the state. Returns the
// seconds left, rounded up, 0 when it stands still.
int64_t tickWatchdog(Watchdog& watchdog, Ledger& ledger);
Bytes watchdogCommand(Watchdog& watchdog, Ledger& ledger, uint8_t cmd, const Bytes& data);

using Position = std::tuple<uint32_t, uint32_t, uint32_t>; // aoc, group, slot

struct Bay {
    std::string serial; // as the answer holds it, at most 20 bytes
    int led = -1;       // the last state asked for, -1 none
    size_t located = 0;
};

struct HostPanel {
    uint8_t restartClean = 0; // 0 after a start of the BMC until the agent sets it
    std::map<Position, Bay> bays;
};

Bytes panelCommand(HostPanel& panel, Ledger& ledger, const Bytes& data);

} // namespace bmcsim
