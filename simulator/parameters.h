// The uploaded parameters: Set System Info Parameters (NetFn App 0x06, command 0x58) with
// selectors 192..208, reassembled from chunks and checked.
//
// Request data of one chunk:
//   0     selector
//   1     0x10
//   2..3  total length, base 255 (low digit, high digit)
//   4..5  offset of this chunk, base 255
//   6     bytes of this chunk: 32, or what remains
//   7     index byte, selectors 207 and 208 only
//   then  the bytes
// Selectors 194, 198, 200 and 205 carry a two-byte base-255 count and announce that many items
// under the next selector.
#pragma once

#include "core.h"

#include <map>
#include <set>

namespace bmcsim {

constexpr size_t CHUNK_BYTES = 32;

struct Value {
    uint8_t selector = 0;
    uint8_t index = 0; // of 207 and 208
    std::string text;
};

// What is known of a selector.
struct Stored {
    size_t uploads = 0;   // complete values since the BMC's start
    uint8_t index = 0;    // of the last one, 207 and 208 only
    Lines texts;          // the last value, or the items of a list
    size_t announced = 0; // items of a list
    uint64_t owner = 0;   // the session that announced them
    std::string piece;    // text of an item that has no line end yet
};

using Parameters = std::map<uint8_t, Stored>;
const Stored& storedUnder(const Parameters& parameters, uint32_t selector);

// What one connection is in the middle of. Two clients (a daemon and a one-shot run) upload at
// the same time without disturbing each other's values.
//
// A session is strict once it has asked for the device id, which a client does when it starts. A
// client that only reconnects, or whose BMC restarts under it, may go on in the middle of a value
// or a list without a complaint: that is the BMC's doing.
struct Session {
    struct Pending {
        uint32_t total = 0;
        uint8_t index = 0;
        bool damaged = false; // a chunk of it was refused
        std::string text;
    };
    struct Progress {
        size_t announced = 0;
        size_t received = 0;
        bool damaged = false; // an upload of it was refused, or a clear came in between
    };
    uint64_t id = 0;
    uint64_t generation = 0; // BMC start this belongs to
    bool strict = false;
    bool clearing = false; // between the first and the last upload of a clear
    std::map<uint8_t, Pending> pending = {};
    std::map<uint8_t, Progress> lists = {}; // by list selector
    std::set<uint8_t> begun = {};           // selectors that had a value from its start
};

struct ChunkResult {
    uint8_t code = 0;           // completion code
    std::optional<Value> value; // that this chunk completed
};

// Takes one chunk. `refused` means that the client will be told (or left to believe) that the
// chunk failed: it is checked, but its value is not stored.
ChunkResult setParameter(Parameters& parameters, Session& session, Ledger& ledger,
                         const Bytes& data, bool refused);

} // namespace bmcsim
