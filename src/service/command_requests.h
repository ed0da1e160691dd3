// The BMC's requests: fetched from parameter 207, answered in 207 and 208.
//
// A handled request with command index i and key k is acknowledged in 207 with "i2;", its result
// posted in 208 as "ik;1;;" (done) or "ik;0;;" (not supported, or no such drive), and 207 released
// with "i"; the first digit of i travels as the index byte. A malformed one, or one whose fetch
// failed half-way, is logged and released.
#pragma once

#include "system_info.h"

#include <optional>
#include <string>
#include <string_view>

// Values of the option byte.
enum command_option : BYTE {
    OPTION_PAUSE_RESUME = 1, // value 1 pauses, any other resumes
    OPTION_PERIOD = 2,       // value: seconds between two monitor cycles
    OPTION_CLEAR = 3,
    OPTION_NOTHING = 4,
    OPTION_STATIC_PASS = 5,
    OPTION_LOCATE_OFF = 7, // value: NVMe device number
    OPTION_LOCATE_ON = 8,
};

// A text's parts: "ignored;key;" and the raw option byte, for options 1, 2, 7 and 8 followed by
// the value byte (0 when absent).
struct command_request {
    std::string key;
    BYTE option = 0;
    BYTE value = 0;
};

// Nothing when the text has no key or no option: fewer than two separators, or nothing behind them.
std::optional<command_request> parseCommandRequest(std::string_view text);

// Thread body: polls the BMC every 5 seconds, and wakes the paused threads after a resume.
void* command_request_handler(void* arg);
