// The BMC's requests: fetched from parameter 207, answered in 207 and 208.
#pragma once

#include "system_info.h"

#include <optional>
#include <string>
#include <string_view>

constexpr std::size_t COMMAND_TEXT_SIZE = 1023;

// A parsed command text: "ignored;key;" and the raw option byte, for options 1, 2, 7 and 8
// followed by the value byte (0 when absent).
struct command_request {
    std::string key;
    BYTE option = 0;
    BYTE value = 0;
};

// None for a text without key or rest (logged) or without an option byte.
std::optional<command_request> parseCommandRequest(std::string_view text);

// Thread body: polls the BMC every 5 seconds, and wakes the paused threads after a resume.
void* command_request_handler(void* arg);
