#include "platform/simulated/kcs_interface.h"

#include <array>
#include <utility>

namespace simulated {
namespace {

constexpr std::uint8_t OBF = 0x01;
constexpr std::uint8_t IBF = 0x02;
constexpr std::uint8_t COMMAND = 0x08; // C/D#: the latest byte went to the command register

constexpr std::uint8_t STATE = 0xC0;
constexpr std::uint8_t STATE_IDLE = 0x00;
constexpr std::uint8_t STATE_READ = 0x40;
constexpr std::uint8_t STATE_WRITE = 0x80;
constexpr std::uint8_t STATE_ERROR = 0xC0;

constexpr std::uint8_t CODE_ABORT = 0x60;
constexpr std::uint8_t CODE_WRITE_START = 0x61;
constexpr std::uint8_t CODE_WRITE_END = 0x62;
constexpr std::uint8_t CODE_READ = 0x68;

// IPMI v2.0, table 9-4
constexpr std::uint8_t STATUS_ABORTED = 0x01;
constexpr std::uint8_t STATUS_ILLEGAL_CONTROL = 0x02;
constexpr std::uint8_t STATUS_LENGTH = 0x06;
constexpr std::uint8_t STATUS_UNSPECIFIED = 0xFF;

constexpr std::size_t REQUEST_LIMIT = 255;

void set_state(kcs_interface& kcs, std::uint8_t state) {
    kcs.status = static_cast<std::uint8_t>((kcs.status & ~STATE) | state);
}

void fail(kcs_interface& kcs, std::uint8_t code) {
    set_state(kcs, STATE_ERROR);
    kcs.status_code = code;
    kcs.byte_due = false;
    kcs.waiting = false;
}

// The transfer is over, one way or another; nothing waits in either register.
void drop_transfer(kcs_interface& kcs) {
    kcs.message.clear();
    kcs.sent = 0;
    kcs.ending = false;
    kcs.waiting = false;
    kcs.aborting = false;
    kcs.byte_due = false;
    kcs.status &= static_cast<std::uint8_t>(~OBF);
}

void take_command(kcs_interface& kcs) {
    if (kcs.data_in == CODE_WRITE_START) {
        drop_transfer(kcs);
        set_state(kcs, STATE_WRITE);
        if (kcs.faults.error_at_start)
            fail(kcs, STATUS_UNSPECIFIED);
    } else if (kcs.data_in == CODE_WRITE_END && (kcs.status & STATE) == STATE_WRITE) {
        kcs.ending = true;
    } else if (kcs.data_in == CODE_ABORT) {
        drop_transfer(kcs);
        if (kcs.status_code == 0)
            kcs.status_code = STATUS_ABORTED;
        kcs.aborting = !kcs.faults.abort_refused;
        set_state(kcs, STATE_ERROR);
    } else {
        fail(kcs, STATUS_ILLEGAL_CONTROL);
    }
}

// The request's last byte has come: the BMC works on it, and IBF stays set meanwhile.
void submit(kcs_interface& kcs) {
    if (kcs.message.size() < 2) {
        fail(kcs, STATUS_LENGTH);
        return;
    }
    kcs.waiting = true;
    kcs.deliver(kcs.message);
}

void take_request_byte(kcs_interface& kcs) {
    if (kcs.message.size() == REQUEST_LIMIT) {
        fail(kcs, STATUS_LENGTH);
        return;
    }
    kcs.message.push_back(kcs.data_in);
    if (static_cast<int>(kcs.message.size()) == kcs.faults.error_after_bytes)
        fail(kcs, STATUS_UNSPECIFIED);
    else if (kcs.ending)
        submit(kcs);
}

// The host has acknowledged a byte; the next one, or the closing dummy byte, follows.
void take_acknowledgement(kcs_interface& kcs) {
    if (kcs.data_in != CODE_READ) {
        fail(kcs, STATUS_ILLEGAL_CONTROL);
        return;
    }
    if (static_cast<int>(kcs.sent) == kcs.faults.error_after_response_bytes) {
        fail(kcs, STATUS_UNSPECIFIED);
        return;
    }
    if (kcs.sent >= kcs.message.size() && !kcs.faults.endless)
        set_state(kcs, STATE_IDLE);
    kcs.byte_due = true;
}

void take_data(kcs_interface& kcs) {
    switch (kcs.status & STATE) {
    case STATE_WRITE:
        take_request_byte(kcs);
        break;
    case STATE_READ:
        take_acknowledgement(kcs);
        break;
    case STATE_ERROR:
        if (kcs.aborting) { // the status code is the whole response
            kcs.message = {std::exchange(kcs.status_code, std::uint8_t{0})};
            kcs.byte_due = true;
            kcs.aborting = false;
            set_state(kcs, STATE_READ);
        }
        break;
    default: // IDLE takes no data
        fail(kcs, STATUS_ILLEGAL_CONTROL);
        break;
    }
}

void start_response(kcs_interface& kcs, kcs_message response) {
    if (kcs.faults.response_length >= 0)
        response.resize(static_cast<std::size_t>(kcs.faults.response_length), 0x5A);
    kcs.message = std::move(response);
    kcs.sent = 0;
    kcs.waiting = false;
    kcs.byte_due = true;
    set_state(kcs, kcs.message.empty() ? STATE_IDLE : STATE_READ);
}

void put_byte(kcs_interface& kcs) {
    const bool closing = (kcs.status & STATE) == STATE_IDLE;
    if (closing ? kcs.faults.no_closing_byte
                : static_cast<int>(kcs.sent) == kcs.faults.silent_after)
        return;
    kcs.data_out = 0;
    if (!closing && kcs.sent < kcs.message.size())
        kcs.data_out = kcs.message[kcs.sent];
    ++kcs.sent;
    kcs.byte_due = false;
    kcs.status |= OBF;
}

// One step: take what the host wrote, look for the response, or put the next byte out. IBF goes
// clear one step before OBF goes set.
void step(kcs_interface& kcs) {
    if (kcs.waiting) {
        std::optional<kcs_message> response = kcs.collect();
        if (!response)
            return;
        start_response(kcs, std::move(*response));
        kcs.status &= static_cast<std::uint8_t>(~IBF);
    } else if ((kcs.status & IBF) != 0) {
        if (kcs.faults.ibf_stuck)
            return;
        if ((kcs.status & COMMAND) != 0)
            take_command(kcs);
        else
            take_data(kcs);
        if (!kcs.waiting)
            kcs.status &= static_cast<std::uint8_t>(~IBF);
    } else if (kcs.byte_due && (kcs.status & OBF) == 0) {
        put_byte(kcs);
    }
}

void write_register(kcs_interface& kcs, std::uint8_t value, std::uint8_t command) {
    if ((kcs.status & IBF) != 0)
        return;
    kcs.data_in = value;
    kcs.status = static_cast<std::uint8_t>((kcs.status & ~COMMAND) | IBF | command);
}

} // namespace

kcs_faults kcs_fault_named(std::string_view name) {
    kcs_faults faults;
    faults.ibf_stuck = name == "ibf-stuck";
    faults.error_at_start = name == "error-at-start";
    faults.no_closing_byte = name == "no-closing-byte";
    faults.endless = name == "endless-response";
    faults.abort_refused = name == "abort-refused";
    if (name == "error-mid-frame" || name == "abort-refused")
        faults.error_after_bytes = 1;
    if (name == "read-without-byte")
        faults.silent_after = 0;
    if (name == "long-response")
        faults.response_length = 200;
    return faults;
}

std::uint8_t kcs_read_status(kcs_interface& kcs) {
    const std::uint8_t seen = kcs.status;
    step(kcs);
    return seen;
}

std::uint8_t kcs_read_data(kcs_interface& kcs) {
    kcs.status &= static_cast<std::uint8_t>(~OBF);
    return kcs.data_out;
}

void kcs_write_command(kcs_interface& kcs, std::uint8_t value) {
    write_register(kcs, value, COMMAND);
}

void kcs_write_data(kcs_interface& kcs, std::uint8_t value) {
    write_register(kcs, value, 0);
}

} // namespace simulated
