// The simulated BMC as a whole: its state, and the road of one request through it. No input or
// output happens here: a request goes in, the answer or the bytes to send (and when) come out.
#pragma once

#include "command_slot.h"
#include "faults.h"
#include "oem.h"
#include "sel.h"

namespace bmcsim {

// Traffic of one command; of 0x58 by selector.
struct Traffic {
    size_t requests = 0;
    size_t failed = 0;   // answered with a completion code other than 0
    size_t bytesIn = 0;  // command and data, both ways, without framing
    size_t bytesOut = 0; // command, completion code and data
    size_t values = 0;   // complete values (0x58)
    size_t needed = 0;   // requests those values need: max(1, ceil(n / 32)) each
};

using TrafficKey = std::tuple<int, int, int>; // NetFn, command, selector or -1

struct Bmc {
    Ledger ledger;
    Sel sel;
    Parameters parameters;
    CommandSlot slot;
    Files files;
    Watchdog watchdog;
    HostPanel panel;
    Faults faults;
    uint8_t globalEnables = 0x0C;
    std::map<TrafficKey, Traffic> traffic;
    uint64_t generation = 1; // rises with every restart
    int64_t startMs = 0;
    int64_t lastRequestMs = 0;
    uint64_t sessions = 0; // handed out so far
    size_t clients = 0;    // connected now
};

Session newSession(Bmc& bmc);

// Handles one request of a session at the time `nowMs`, which never goes back. Returns completion
// code and data as the client gets them, empty for silence. Faults of the wire don't show here.
Bytes answerRequest(Bmc& bmc, Session& session, int64_t nowMs, uint8_t netFn, uint8_t cmd,
                    const Bytes& data);
// The same on the wire, at the time of the ledger. Without bytes and without `close`: silence.
Wire serveRequest(Bmc& bmc, Session& session, const Message& request);

// The BMC restarts: every value and posted command is gone, the restart-clean flag reads 0, the
// watchdog stands still, LEDs are off. Event log, clock, files, drive positions and faults stay.
void restartBmc(Bmc& bmc);

} // namespace bmcsim
