// The command slot: requests of the BMC to the agent, fetched with Get System Info Parameters
// (NetFn App 0x06, command 0x59) of selector 207 and answered through selectors 207 and 208.
//
// Fetch request, 8 bytes: 0x10, 0xCF, 0, command index, 0, offset (base 255, 2 bytes), bytes
// wanted. Response: 2 bytes unused, total length (16-bit little-endian), offset (the same), bytes
// in this chunk, command index, the bytes. Command text: any field ";" key ";" option byte [value
// byte]. The agent then posts, index first: 207 "2;" (taken), 208 key;1;; or key;0;; (done or
// refused), 207 with empty text (released). 208 with index 0 and no text opens every cycle.
#pragma once

#include "parameters.h"

#include <deque>

namespace bmcsim {

enum class SlotPhase {
    IDLE,         // nothing handed out
    PARTIAL,      // the first part of a command was fetched
    FETCHED,      // all of it
    ACKNOWLEDGED, // 207 "2;" came
    ANSWERED,     // 208 came
    DISTURBED     // a fault hit the exchange: nothing is held against the agent until it ends
};

struct CommandSlot {
    std::deque<Value> queue; // the front one is on offer
    SlotPhase phase = SlotPhase::IDLE;
    uint32_t nextOffset = 0;
    uint64_t session = 0;             // the last one that fetched
    size_t idlePolls = 0;             // fetches that found nothing
    size_t released = 0;              // commands released
    std::deque<std::string> exchange; // the latest 500 lines
};

void postCommand(CommandSlot& slot, const Ledger& ledger, const Value& command);
// Answers a fetch of a session.
Bytes fetchCommand(CommandSlot& slot, uint64_t session, Ledger& ledger, const Bytes& data);
// A fetch or an upload of 207 or 208 goes wrong by order (a fault, a scripted answer): the rest of
// the exchange is recorded but not judged, until the next cycle opens or the command is released.
void disturbSlot(CommandSlot& slot, const Ledger& ledger, const std::string& what);
// A completed upload of 207 or 208 by a session.
void slotAnswer(CommandSlot& slot, uint64_t session, Ledger& ledger, const Value& value);

} // namespace bmcsim
