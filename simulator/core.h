// What every room of the BMC simulator shares: byte strings, completion codes, text forms of
// bytes, and the ledger that keeps the time, the complaints and the request trace.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace bmcsim {

using Bytes = std::vector<uint8_t>;

// Completion codes (IPMI v2.0, table 5-2).
constexpr uint8_t CC_OK = 0x00;
constexpr uint8_t CC_PARAMETER_UNSUPPORTED = 0x80;
constexpr uint8_t CC_INVALID_COMMAND = 0xC1;
constexpr uint8_t CC_OUT_OF_SPACE = 0xC4;
constexpr uint8_t CC_RESERVATION_LOST = 0xC5;
constexpr uint8_t CC_LENGTH_INVALID = 0xC7;
constexpr uint8_t CC_OUT_OF_RANGE = 0xC9;
constexpr uint8_t CC_NOT_PRESENT = 0xCB;
constexpr uint8_t CC_INVALID_FIELD = 0xCC;
constexpr uint8_t CC_WRONG_STATE = 0xD5;

// Time, complaints and trace. Handlers read `nowMs` and never ask the kernel for the time, so a
// test moves the clock by writing it.
struct Ledger {
    int64_t nowMs = 0;    // monotonic milliseconds
    int64_t originMs = 0; // when the simulator started; printed times count from here
    std::vector<std::string> complaints;
    size_t complaintCount = 0; // also counts those that were not kept
    bool tracing = false;
    std::deque<std::string> trace;
};

constexpr size_t MAX_COMPLAINTS = 1000;     // kept; later ones are only counted
constexpr size_t MAX_COMPLAINT_TEXT = 1200; // longer ones are cut
constexpr size_t MAX_TRACE_LINES = 5000;

// "   12.345", seconds since the simulator started.
std::string stampText(const Ledger& ledger);
// Records that the client did something that does not add up.
void complain(Ledger& ledger, const std::string& text);
// Records a line of the request trace while tracing is on.
void trace(Ledger& ledger, const std::string& text);

// printf into a string.
[[gnu::format(printf, 1, 2)]] std::string format(const char* pattern, ...);

// "0A ff 3" style hexadecimal, blanks between bytes optional ("0aff"); false if it is not that.
bool parseHex(std::string_view text, Bytes& out);
std::string hexText(const Bytes& bytes);
// A whole number: decimal, or hexadecimal after "0x"; false when out of [low, high] or no number.
bool parseNumber(std::string_view text, int64_t low, int64_t high, int64_t& out);

// Printable ASCII as it stands, backslash doubled, every other byte as \xHH.
std::string escapeText(std::string_view text);

// Splits at any character of `separators`; empty pieces are kept.
std::vector<std::string> splitText(std::string_view text, std::string_view separators);
// Splits at runs of blanks; no empty pieces.
std::vector<std::string> words(std::string_view text);

uint32_t littleEndian(const Bytes& bytes, size_t at, size_t size);
void appendLittleEndian(Bytes& bytes, uint32_t value, size_t size);

// A length or offset in the two-byte base-255 form of the upload requests: low digit, high digit.
// False when a digit is 255, which no such number has.
bool base255(uint8_t low, uint8_t high, uint32_t& out);

// Seconds since 1970 as "YYYY-MM-DD hh:mm:ss" (UTC).
std::string timeText(uint32_t seconds);

} // namespace bmcsim
