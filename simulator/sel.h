// The system event log and its clock (IPMI v2.0, chapters 31 and 32), with an empty sensor
// repository beside it so that ordinary clients get clean answers.
#pragma once

#include "core.h"

#include <array>

namespace bmcsim {

// 16 bytes (IPMI v2.0, 32.1): record id (2), type, time (4), generator (2), message revision,
// sensor type, sensor number, direction and event type, event data 1..3. Little-endian.
using SelRecord = std::array<uint8_t, 16>;

struct Sel {
    std::vector<SelRecord> records;
    size_t capacity = 4096; // records
    uint16_t nextId = 1;
    uint16_t reservation = 0;
    bool overflow = false;
    uint32_t lastAdd = 0;
    uint32_t lastErase = 0;
    uint32_t clockBase = 0; // the BMC's time, seconds since 1970, at clockBaseMs
    int64_t clockBaseMs = 0;
};

// The BMC's clock now; and setting it.
uint32_t selTime(const Sel& sel, const Ledger& ledger);
void setSelTime(Sel& sel, const Ledger& ledger, uint32_t seconds);

uint16_t selRecordId(const SelRecord& record);

// NetFn 0x0A: SEL Info, Allocation Info, Reserve, Get, Add, Delete, Clear, SEL Time, and the
// repository commands of an empty repository.
uint8_t storageCommand(Sel& sel, Ledger& ledger, uint8_t cmd, const Bytes& data, Bytes& out);

// NetFn 0x04, command 0x02 from the system interface (IPMI v2.0, 29.3): generator, message
// revision, sensor type, sensor number, direction and type, event data 1..3. The agent's own
// drive and network events are checked field by field.
uint8_t platformEvent(Sel& sel, Ledger& ledger, const Bytes& data);

// One line: number, time, what, where, direction, condition.
std::string selWords(const SelRecord& record);

} // namespace bmcsim
