// A KCS system interface as the BMC sees it (IPMI v2.0, 9.7 to 9.14): the registers that the host
// reads and writes, and the state machine behind them. The BMC takes its steps one by one as the
// host polls the status register, so a host that doesn't wait for IBF or OBF loses bytes here as
// it does on a board.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace simulated {

// What the interface is told to do wrong.
struct kcs_faults {
    bool ibf_stuck = false;              // the first byte written is never taken
    bool error_at_start = false;         // ERROR after WRITE_START
    int error_after_bytes = -1;          // ERROR once this many request bytes have been taken
    int error_after_response_bytes = -1; // ERROR once this many response bytes are acknowledged
    int silent_after = -1;        // READ without a byte once this many response bytes are out
    bool no_closing_byte = false; // IDLE without the dummy byte
    bool endless = false;         // response bytes without end
    bool abort_refused = false;   // ERROR stays after GET_STATUS/ABORT
    int response_length = -1;     // the response is cut or filled up to this many bytes
};

// One fault by name, for VYN_SIM_KCS_FAULT: "ibf-stuck", "error-at-start", "error-mid-frame",
// "read-without-byte", "no-closing-byte", "long-response", "endless-response", "abort-refused"
// (which also fails mid-frame). Any other name is no fault.
kcs_faults kcs_fault_named(std::string_view name);

// A message is NetFn << 2 | LUN, command and data; a response has the completion code before its
// data.
using kcs_message = std::vector<std::uint8_t>;

struct kcs_interface {
    // Whether a BMC is there at all; without one the ports float.
    std::function<bool()> present;
    // Hands a request to the BMC; a response is then asked for at every poll until there is one.
    std::function<void(const kcs_message& request)> deliver;
    std::function<std::optional<kcs_message>()> collect;
    kcs_faults faults;

    std::uint8_t status = 0;      // state, C/D#, IBF and OBF
    std::uint8_t data_in = 0;     // from the host
    std::uint8_t data_out = 0;    // to the host
    std::uint8_t status_code = 0; // of the latest error
    bool ending = false;          // WRITE_END was taken
    bool waiting = false;         // the BMC has the request
    bool aborting = false;        // GET_STATUS/ABORT was taken
    bool byte_due = false;        // a byte goes out at the next poll
    kcs_message message;          // request, then response
    std::size_t sent = 0;         // response bytes that are out
};

// The registers. Reading the status lets the BMC take one step afterwards; a byte written while
// IBF is set is lost.
std::uint8_t kcs_read_status(kcs_interface& kcs);
std::uint8_t kcs_read_data(kcs_interface& kcs);
void kcs_write_command(kcs_interface& kcs, std::uint8_t value);
void kcs_write_data(kcs_interface& kcs, std::uint8_t value);

// The interface that inb and outb reach, in front of the BMC behind VYN_SIM_BMC, with the fault
// that VYN_SIM_KCS_FAULT names. A test may replace its functions and faults.
kcs_interface& kcs_behind_ports();

} // namespace simulated
