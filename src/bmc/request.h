// One request to the BMC, and whether it is worth while to send another.
#pragma once

#include "smipmi.h"

#include <array>
#include <initializer_list>
#include <string_view>

// What came back. `data` are the bytes after the completion code, zeros beyond `length`, so that a
// response shorter than it should be reads as filled up with zeros.
struct bmc_response {
    BYTE code = TRANSPORT_FAILED; // completion code, 0 success
    DWORD length = 0;
    std::array<BYTE, RESPONSE_SIZE> data{};

    bool ok() const {
        return code == 0;
    }
    std::string_view text() const {
        return {reinterpret_cast<const char*>(data.data()), length};
    }
};

// Sends a request of at most 126 data bytes and waits for its response. Nothing is logged.
//
// A request that failed at the transport, or that the driver or the BMC answered as timed out
// (0xC3; IPMI v2.0, 5.2), takes the BMC for away: until tryBmcAgain the thread's further requests
// fail at once, without being sent.
bmc_response askBmc(BYTE netFn, BYTE command, const BYTE* data, std::size_t length);
bmc_response askBmc(BYTE netFn, BYTE command, std::initializer_list<BYTE> data);

// Whether the calling thread takes the BMC for away.
bool bmcAway();

// Begins a cycle of the calling thread: its requests are sent again.
void tryBmcAgain();

// Prints "BMC not reached" to standard error when any request of this process took it for away.
void tellUnreached();
