// The commands that tell the simulator what to do and show what it knows, one per line, and the
// conditions that a test waits for instead of sleeping.
#pragma once

#include "bmc.h"

#include <functional>

namespace bmcsim {

// True when it holds. The BMC that it was made for must be there.
using Condition = std::function<bool()>;

// Things only the server can do.
enum class Action { NONE, QUIT, DISCONNECT, AWAY, BACK };

struct PendingWait {
    Condition holds;
    int64_t untilMs = 0;
    std::string text;
};

// What came of a command line. The reply is the lines, then "ok" or "error: ..." unless a wait is
// left: then the reply ends when it holds or its time is over.
struct Outcome {
    Lines lines;
    std::string error;
    Action action = Action::NONE;
    std::optional<PendingWait> wait;
};

Outcome runCommand(Bmc& bmc, const std::string& line);
std::string commandUsage();

} // namespace bmcsim
