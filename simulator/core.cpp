#include "core.h"

#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <ctime>

namespace bmcsim {

std::string stampText(const Ledger& ledger) {
    return format("%9.3f", static_cast<double>(ledger.nowMs - ledger.originMs) / 1000.0);
}

void complain(Ledger& ledger, const std::string& text) {
    constexpr size_t MAX_COMPLAINTS = 1000;
    constexpr size_t MAX_TEXT = 1200;
    const size_t count = ledger.complaints.size();
    if (count <= MAX_COMPLAINTS)
        ledger.complaints.push_back(count < MAX_COMPLAINTS ? text.substr(0, MAX_TEXT) : "and more");
    trace(ledger, "complaint: " + text);
}

void trace(Ledger& ledger, const std::string& text) {
    constexpr size_t MAX_LINES = 5000;
    if (!ledger.tracing)
        return;
    ledger.trace.push_back(stampText(ledger) + "  " + text);
    if (ledger.trace.size() > MAX_LINES)
        ledger.trace.erase(ledger.trace.begin());
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

std::optional<Bytes> parseHex(std::string_view text) {
    Bytes bytes;
    for (const std::string& word : words(text)) {
        for (size_t i = 0; i < word.size(); i += 2) {
            const auto byte = parseNumber("0x" + word.substr(i, 2), 255);
            if (!byte)
                return {};
            bytes.push_back(static_cast<uint8_t>(*byte));
        }
    }
    return bytes;
}

std::string hexText(const Bytes& bytes) {
    std::string text;
    for (const uint8_t byte : bytes)
        text += format(text.empty() ? "%02X" : " %02X", byte);
    return text;
}

std::optional<uint32_t> parseNumber(std::string_view text, uint32_t high) {
    const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    if (hex)
        text.remove_prefix(2);
    uint32_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, value, hex ? 16 : 10);
    if (error != std::errc() || next != end || value > high)
        return {};
    return value;
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

Lines splitText(std::string_view text, std::string_view separators) {
    Lines pieces(1);
    for (const char character : text) {
        if (separators.find(character) != std::string_view::npos)
            pieces.emplace_back();
        else
            pieces.back() += character;
    }
    return pieces;
}

Lines words(std::string_view text) {
    Lines found;
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

std::optional<uint32_t> base255(uint8_t low, uint8_t high) {
    return low == 255 ? std::nullopt : std::optional(low + 255U * high);
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
