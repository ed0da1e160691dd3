// What every room of the BMC simulator shares: byte strings, completion codes, text forms of
// bytes, and the ledger that keeps the time, the complaints and the request trace.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace bmcsim {

using Bytes = std::vector<uint8_t>;
using Lines = std::vector<std::string>;

// Completion codes (IPMI v2.0, table 5-2). What answers a request returns one of these, then the
// data of the answer when it is CC_OK.
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

// Time, complaints and trace. Whoever drives the BMC sets `nowMs`; nothing that handles a request
// asks the kernel for the time.
struct Ledger {
    int64_t nowMs = 0;    // monotonic milliseconds
    int64_t originMs = 0; // when the simulator started; printed times count from here
    Lines complaints;
    bool tracing = false;
    Lines trace;
};

// "   12.345", seconds since the simulator started.
std::string stampText(const Ledger& ledger);
// Records that the client did something that does not add up. Long texts are cut, and after a
// thousand complaints it only says that there are more.
void complain(Ledger& ledger, const std::string& text);
// Records a line of the request trace while tracing is on; the latest 5000 are kept.
void trace(Ledger& ledger, const std::string& text);

// printf into a string.
[[gnu::format(printf, 1, 2)]] std::string format(const char* pattern, ...);

// "0A ff 3" style hexadecimal, blanks between bytes optional ("0aff"); nothing if it is not that.
std::optional<Bytes> parseHex(std::string_view text);
std::string hexText(const Bytes& bytes);
// A whole number from 0 to `high`, decimal, or hexadecimal after "0x".
std::optional<uint32_t> parseNumber(std::string_view text, uint32_t high);

// Printable ASCII as it stands, backslash doubled, every other byte as \xHH.
std::string escapeText(std::string_view text);

// Splits at any character of `separators`; empty pieces are kept.
Lines splitText(std::string_view text, std::string_view separators);
// Splits at runs of blanks; no empty pieces.
Lines words(std::string_view text);

// `size` bytes from `at` on; bytes beyond the end count as 0.
uint32_t littleEndian(const Bytes& bytes, size_t at, size_t size);
void appendLittleEndian(Bytes& bytes, uint32_t value, size_t size);

// A length or offset in the two-byte base-255 form of the upload requests: low digit, high digit.
// Nothing when the low digit is 255, which no such number has.
std::optional<uint32_t> base255(uint8_t low, uint8_t high);

// Seconds since 1970 as "YYYY-MM-DD hh:mm:ss" (UTC).
std::string timeText(uint32_t seconds);

} // namespace bmcsim
