// Fetching the text of the BMC's request from parameter 207 (IPMI v2.0, 22.14b "Get System Info
// Parameters").
//
// Request: 0x10, selector, 0x00, command index, 0x00, offset mod 255, offset / 255, bytes wanted.
// Response: 0..1 not used, 2..3 total length, 4..5 offset, 6 length of this chunk, 7 command index,
// 8.. the chunk. Lengths and offset of the response are least significant byte first, in base 256.
#pragma once

#include "system_info.h"

#include <string>
#include <string_view>

constexpr std::size_t COMMAND_TEXT_SIZE = 1023; // text beyond is not stored
constexpr unsigned COMMAND_FETCH_SIZE = 32;

// One response, decoded. Fields that the response is too short for are 0.
struct command_chunk {
    unsigned total = 0;
    unsigned offset = 0;
    unsigned length = 0;
    BYTE index = 0;
    std::string_view text; // the bytes present, at most `length`
};

command_chunk decodeCommandChunk(const BYTE* response, DWORD length);

// A fetch under way.
struct command_fetch {
    unsigned wanted = COMMAND_FETCH_SIZE; // 0 at the end
    unsigned offset = 0;                  // of the next chunk
    unsigned total = 0;
    BYTE index = 0;
    std::string text;
};

// Appends a chunk and notes how much to ask for next. False for an invalid length: a chunk at
// another offset than asked for, one that holds fewer bytes than it says or reaches beyond the
// total, a total that changes from chunk to chunk, and no byte while bytes are owed.
bool takeCommandChunk(command_fetch& fetch, const command_chunk& chunk);

struct fetched_command {
    std::string text; // empty when the BMC asks for nothing
    BYTE index = 0;
    bool complete = false; // false: the fetch failed, which the error log tells, or was given up
};

// Fetches the request that waits in the BMC, to its end even under a stop, as far as its
// text is stored: a request half taken would be lost.
fetched_command fetchCommand();
