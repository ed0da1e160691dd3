// The simulated BMC as a whole: its state, and the road of one request through it. No input or
// output happens here: a request goes in, the bytes to send (and when) come out.
#pragma once

#include "app.h"
#include "command_slot.h"
#include "faults.h"
#include "oem_files.h"
#include "oem_host.h"
#include "parameters.h"
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

struct TrafficKey {
    int netFn = 0, cmd = 0, selector = -1;
    bool operator<(const TrafficKey& other) const {
        return std::tie(netFn, cmd, selector) < std::tie(other.netFn, other.cmd, other.selector);
    }
};

struct Bmc {
    Ledger ledger;
    Identity identity;
    Sel sel;
    Parameters parameters;
    CommandSlot slot;
    Files files;
    Watchdog watchdog;
    HostPanel panel;
    Faults faults;
    std::map<TrafficKey, Traffic> traffic;
    size_t badFrames = 0;
    uint64_t generation = 1; // rises with every restart
    int64_t startMs = 0;
    int64_t lastRequestMs = 0;
    uint64_t sessions = 0; // handed out so far
    size_t clients = 0;    // connected now
};

Session newSession(Bmc& bmc);
// Handles one request of a session. A Wire without bytes and without `close` means silence.
Wire handleRequest(Bmc& bmc, Session& session, const Message& request);
void badFrame(Bmc& bmc, const std::string& why);

// The BMC restarts: every value and posted command is gone, the restart-clean flag reads 0, the
// watchdog stands still, LEDs are off. Event log, clock, files, drive positions and faults stay.
void restartBmc(Bmc& bmc);

} // namespace bmcsim
