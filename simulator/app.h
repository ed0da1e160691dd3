// The BMC's own identity and the few application commands that drivers ask for
// (IPMI v2.0, chapters 20 and 22).
#pragma once

#include "core.h"

namespace bmcsim {

struct Identity {
    uint8_t ipmiVersion = 0x02; // 0x02: IPMI 2.0, 0x51: IPMI 1.5
    uint8_t globalEnables = 0x0C;
};

// Get Device ID, Get Self Test Results, Get Device GUID, BMC Global Enables and Message Flags.
// Parameter commands live elsewhere. Returns the completion code; `out` holds the data after it.
uint8_t appCommand(Identity& identity, uint8_t cmd, const Bytes& data, Bytes& out);

} // namespace bmcsim
