#include "core.h"

#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <ctime>

namespace bmcsim {

std::string stampText(const Ledger& ledger) {
    return format("%9.3f", static_cast<double>(ledger.nowMs - ledger.originMs) / 1000.0);
}

void complain(Ledger& ledger, const std::string& text) {
    ledger.complaintCount++;
    if (ledger.complaints.size() < MAX_COMPLAINTS)
        ledger.complaints.push_back(text.substr(0, MAX_COMPLAINT_TEXT));
    trace(ledger, "complaint: " + text);
}

void trace(Ledger& ledger, const std::string& text) {
    if (!ledger.tracing)
        return;
    ledger.trace.push_back(stampText(ledger) + "  " + text);
    if (ledger.trace.size() > MAX_TRACE_LINES)
        ledger.trace.pop_front();
}

std::string format(const char* pattern, ...) {
    va_list arguments;
    va_start(arguments, pattern);
    va_list again;
    va_copy(again, arguments);
    const int length = vsnprintf(nullptr, 0, pattern, arguments);
    va_end(arguments);
    std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    if (!text.empty())
        vsnprintf(text.data(), text.size() + 1, pattern, again);
    va_end(again);
    return text;
}

bool parseHex(std::string_view text, Bytes& out) {
    out.clear();
    for (const std::string& word : words(text)) {
        const std::string digits = word.size() % 2 == 1 ? "0" + word : word;
        for (size_t i = 0; i < digits.size(); i += 2) {
            int64_t value = 0;
            if (!parseNumber("0x" + digits.substr(i, 2), 0, 255, value))
                return false;
            out.push_back(static_cast<uint8_t>(value));
        }
    }
    return true;
}

std::string hexText(const Bytes& bytes) {
    std::string text;
    for (const uint8_t byte : bytes)
        text += format(text.empty() ? "%02X" : " %02X", byte);
    return text;
}

static int digitValue(char digit) {
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    const char lower = static_cast<char>(tolower(static_cast<unsigned char>(digit)));
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : 99;
}

bool parseNumber(std::string_view text, int64_t low, int64_t high, int64_t& out) {
    const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const int base = hex ? 16 : 10;
    if (hex)
        text.remove_prefix(2);
    if (text.empty() || text.size() > 15)
        return false;
    int64_t value = 0;
    for (const char digit : text) {
        if (digitValue(digit) >= base)
            return false;
        value = value * base + digitValue(digit);
    }
    if (value < low || value > high)
        return false;
    out = value;
    return true;
}

std::string escapeText(std::string_view text) {
    std::string escaped;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '\\')
            escaped += "\\\\";
        else if (byte >= 0x20 && byte < 0x7F)
            escaped += character;
        else
            escaped += format("\\x%02X", byte);
    }
    return escaped;
}

std::vector<std::string> splitText(std::string_view text, std::string_view separators) {
    std::vector<std::string> pieces(1);
    for (const char character : text) {
        if (separators.find(character) != std::string_view::npos)
            pieces.emplace_back();
        else
            pieces.back() += character;
    }
    return pieces;
}

std::vector<std::string> words(std::string_view text) {
    std::vector<std::string> found;
    for (std::string& piece : splitText(text, " \t\r\n"))
        if (!piece.empty())
            found.push_back(std::move(piece));
    return found;
}

uint32_t littleEndian(const Bytes& bytes, size_t at, size_t size) {
    uint32_t value = 0;
    for (size_t i = 0; i < size && at + i < bytes.size(); i++)
        value |= static_cast<uint32_t>(bytes[at + i]) << (8 * i);
    return value;
}

void appendLittleEndian(Bytes& bytes, uint32_t value, size_t size) {
    for (size_t i = 0; i < size; i++)
        bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

bool base255(uint8_t low, uint8_t high, uint32_t& out) {
    out = low + 255U * high;
    return low != 255;
}

std::string timeText(uint32_t seconds) {
    const time_t time = seconds;
    struct tm parts = {};
    gmtime_r(&time, &parts);
    char text[32];
    strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
    return text;
}

} // namespace bmcsim
