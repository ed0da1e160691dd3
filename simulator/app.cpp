#include "app.h"

namespace bmcsim {

// IPMI v2.0, 20.1: device id, revision, firmware 3.21 (BCD minor), version, device support (SEL
// and SDR repository), manufacturer (3 bytes), product (2 bytes), auxiliary revision (4 bytes).
static void deviceId(const Identity& identity, Bytes& out) {
    out = {0x20, 0x01, 0x03, 0x21, identity.ipmiVersion, 0x06, 0, 0, 0, 0x01, 0, 0, 0, 0, 0};
}

static void deviceGuid(Bytes& out) {
    for (uint8_t i = 0; i < 16; i++)
        out.push_back(static_cast<uint8_t>(0xB0 + i));
}

uint8_t appCommand(Identity& identity, uint8_t cmd, const Bytes& data, Bytes& out) {
    switch (cmd) {
    case 0x01: // Get Device ID
        deviceId(identity, out);
        return CC_OK;
    case 0x04: // Get Self Test Results: no error
        out = {0x55, 0x00};
        return CC_OK;
    case 0x08: // Get Device GUID
    case 0x37: // Get System GUID
        deviceGuid(out);
        return CC_OK;
    case 0x2E: // Set BMC Global Enables
        if (data.size() != 1)
            return CC_LENGTH_INVALID;
        identity.globalEnables = data[0];
        return CC_OK;
    case 0x2F: // Get BMC Global Enables
        out = {identity.globalEnables};
        return CC_OK;
    case 0x30: // Clear Message Flags
        return CC_OK;
    case 0x31: // Get Message Flags: none
        out = {0x00};
        return CC_OK;
    case 0x33: // Get Message: the queue is empty
    case 0x35: // Read Event Message Buffer: the same
        return CC_PARAMETER_UNSUPPORTED;
    default:
        return CC_INVALID_COMMAND;
    }
}

} // namespace bmcsim
