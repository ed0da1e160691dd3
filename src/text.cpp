#include "text.h"

#include <algorithm>
#include <climits>

namespace {

struct substitution {
    const char* pair;   // two separators with nothing between them
    const char* filled; // the same with the placeholder
};

constexpr substitution SUBSTITUTIONS[] = {
    {";;", ";N/A;"},
    {";:", ";N/A:"},
    {":;", ":N/A;"},
    {"::", ":N/A:"},
};

// One pass from left to right, without overlap.
std::string substituted(const std::string& text, const substitution& rule) {
    std::string result;
    std::size_t start = 0;
    for (std::size_t found; (found = text.find(rule.pair, start)) != std::string::npos;
         start = found + 2)
        result.append(text, start, found - start).append(rule.filled);
    return result.append(text, start, std::string::npos);
}

void fillEmptyFields(std::string& data, std::size_t rules) {
    data.resize(std::min(data.find('\n'), data.size()));
    for (std::size_t rule = 0; rule < rules; ++rule)
        // A second pass fills what the first one's non-overlapping matches left between them.
        for (int pass = 0; pass < 2; ++pass)
            data = substituted(data, SUBSTITUTIONS[rule]);
    data.resize(std::min(data.size(), RECORD_SIZE - 1));
}

bool isWhiteSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

} // namespace

void replaceEmptyToNA(std::string& data) {
    fillEmptyFields(data, 4);
}

void replaceEmptyToNAExceptDoubleColon(std::string& data) {
    fillEmptyFields(data, 3);
}

std::string& trim(std::string& text) {
    std::string result;
    bool blank_due = false;
    for (const char c : text) {
        if (isWhiteSpace(c)) {
            blank_due = !result.empty();
            continue;
        }
        if (blank_due)
            result += ' ';
        blank_due = false;
        result += c;
    }
    return text = std::move(result);
}

std::vector<std::string> splitFields(std::string_view text, std::string_view separators,
                                     std::size_t most) {
    std::vector<std::string> fields;
    while (fields.size() < most) {
        const std::size_t end = text.find_first_of(separators);
        fields.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos)
            break;
        text.remove_prefix(end + 1);
    }
    return fields;
}

bool dropNewline(std::string& line) {
    if (line.empty() || line.back() != '\n')
        return false;
    line.pop_back();
    return true;
}

int leadingInteger(std::string_view text, int fallback) {
    while (!text.empty() && isWhiteSpace(text.front()))
        text.remove_prefix(1);
    const bool negative = !text.empty() && text.front() == '-';
    if (!text.empty() && (text.front() == '-' || text.front() == '+'))
        text.remove_prefix(1);
    if (text.empty() || text.front() < '0' || text.front() > '9')
        return fallback;
    long long value = 0;
    for (; !text.empty() && text.front() >= '0' && text.front() <= '9'; text.remove_prefix(1))
        value = std::min(value * 10 + (text.front() - '0'), -static_cast<long long>(INT_MIN));
    return static_cast<int>(negative ? -value : std::min<long long>(value, INT_MAX));
}

std::array<BYTE, 2> itemCount(int count) {
    return {static_cast<BYTE>(count % 255), static_cast<BYTE>(count / 255)};
}
