// The system event log and its clock (IPMI v2.0, chapters 31 and 32): what agents write to it and
// what ordinary clients need to read it.
#pragma once

#include "core.h"

namespace bmcsim {

// A system event record (IPMI v2.0, 32.1, record type 02h). `event` is as it came from the system
// interface (29.3), 8 bytes: generator, message revision, sensor type, sensor number, direction and
// event type, event data 1..3.
struct SelRecord {
    uint16_t id = 0;
    uint32_t time = 0; // seconds since 1970
    Bytes event;
};

struct Sel {
    std::vector<SelRecord> records;
    size_t capacity = 4096; // records
    uint16_t nextId = 1;
    uint32_t lastAdd = 0;
    uint32_t lastErase = 0;
    uint32_t clockBase = 0; // the BMC's time, seconds since 1970, at clockBaseMs
    int64_t clockBaseMs = 0;
};

// The BMC's clock now; and setting it.
uint32_t selTime(const Sel& sel, const Ledger& ledger);
void setSelTime(Sel& sel, const Ledger& ledger, uint32_t seconds);
void clearSel(Sel& sel, const Ledger& ledger);

// NetFn 0x0A: Get SEL Info, Get SEL Entry, Get SEL Time.
Bytes storageCommand(Sel& sel, const Ledger& ledger, uint8_t cmd, const Bytes& data);

// NetFn 0x04, command 0x02. The agent's own drive and network events are checked field by field.
Bytes platformEvent(Sel& sel, Ledger& ledger, const Bytes& data);

// One line: number, time, what, where, direction, condition.
std::string selWords(const SelRecord& record);

} // namespace bmcsim
