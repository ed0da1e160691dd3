// Upload of OEM system-information parameters (IPMI v2.0, 22.14a "Set System Info Parameters").
//
// A chunk: selector, 0x10, total length mod 255, total length / 255, offset mod 255,
// offset / 255, count (at most 32), for selectors 207 and 208 the index byte, the value bytes.
#pragma once

#include "system_info.h"

#include <array>
#include <string_view>

// Selectors and what they hold; a count is two bytes, mod 255 and / 255.
constexpr BYTE PARM_OS_NAME = 192;
constexpr BYTE PARM_OS_VERSION = 193;
constexpr BYTE PARM_LAN_COUNT = 194;
constexpr BYTE PARM_LAN = 195;
constexpr BYTE PARM_CPU = 196;
constexpr BYTE PARM_MEMORY = 197;
constexpr BYTE PARM_STORAGE_COUNT = 198;
constexpr BYTE PARM_STORAGE = 199;
constexpr BYTE PARM_NETWORK_COUNT = 200;
constexpr BYTE PARM_NETWORK = 201;
constexpr BYTE PARM_TIME_STAMP = 202;
constexpr BYTE PARM_RESERVED = 203; // only ever cleared
constexpr BYTE PARM_AGENT = 204;
constexpr BYTE PARM_NVME_COUNT = 205;
constexpr BYTE PARM_NVME = 206;
constexpr BYTE PARM_COMMAND = 207;
constexpr BYTE PARM_COMMAND_RESULT = 208;

// Uploads a value, which ends at its first zero byte, in chunks of 32 bytes under cmd_lock. For
// 207 and 208 the first character less '0' travels as the index byte (255 for an empty value). A
// refused chunk is reported on standard output, in the main log ("cCode ->") and in the error
// log, and the next one is sent all the same. While the BMC is away nothing is sent or reported.
void ipmiCmdSet(BYTE parm, std::string_view buffer);

// Uploads a count as its two bytes.
void ipmiCmdSet(BYTE parm, const std::array<BYTE, 2>& count);

// How many values did not reach the BMC whole so far.
unsigned long untakenValues();

// Sends one ready chunk under cmd_lock; returns the completion code. Nothing is logged.
BYTE sendChunk(const BYTE* chunk, int length);

// From now on only the calling thread's uploads reach the BMC; those of other threads are dropped
// with completion code 0. For a shutdown that blanks the values under running workers.
void reserveUploads();
