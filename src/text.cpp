#include "text.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdlib>

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

// Whether the pair found is part of a "::" at the edge of its field.
bool isInDoubleColon(const std::string& text, std::size_t found) {
    return text.compare(found, 3, ";::") == 0 ||
           (found > 0 && text.compare(found - 1, 3, "::;") == 0);
}

// One pass from left to right, without overlap.
std::string substituted(const std::string& text, const substitution& rule, bool double_colon) {
    std::string result;
    std::size_t start = 0;
    for (std::size_t found; (found = text.find(rule.pair, start)) != std::string::npos;
         start = found + 2)
        result.append(text, start, found - start)
            .append(double_colon && isInDoubleColon(text, found) ? rule.pair : rule.filled);
    return result.append(text, start, std::string::npos);
}

// With `double_colon` a "::" is part of an address.
void fillEmptyFields(std::string& data, bool double_colon) {
    data.resize(std::min(data.find('\n'), data.size()));
    const std::size_t rules = std::size(SUBSTITUTIONS) - (double_colon ? 1 : 0);
    for (std::size_t rule = 0; rule < rules; ++rule)
        // A second pass fills what the first one's non-overlapping matches left between them.
        for (int pass = 0; pass < 2; ++pass)
            data = substituted(data, SUBSTITUTIONS[rule], double_colon);
    data.resize(std::min(data.size(), RECORD_SIZE - 1));
}

constexpr std::string_view BLANKS = " \t";

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool sameLetter(char a, char b) {
    return lower(a) == lower(b);
}

std::string without(std::string_view text, std::string_view characters) {
    std::string result;
    for (const char c : text)
        if (characters.find(c) == characters.npos)
            result += c;
    return result;
}

bool isWhiteSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

} // namespace

void replaceEmptyToNA(std::string& data) {
    fillEmptyFields(data, false);
}

void replaceEmptyToNAExceptDoubleColon(std::string& data) {
    fillEmptyFields(data, true);
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

bool nextLine(std::string_view& rest, std::string_view& line) {
    if (rest.empty())
        return false;
    const std::size_t end = rest.find('\n');
    line = rest.substr(0, std::min(end, LINE_MOST));
    rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
    return true;
}

std::string_view nextWord(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(BLANKS), rest.size()));
    const std::string_view word = rest.substr(0, rest.find_first_of(BLANKS));
    rest.remove_prefix(word.size());
    return word;
}

std::string_view wordOf(std::string_view line, std::size_t number) {
    while (number-- > 0)
        nextWord(line);
    return nextWord(line);
}

std::vector<std::string_view> wordsOf(std::string_view line) {
    std::vector<std::string_view> words;
    for (std::string_view word; !(word = nextWord(line)).empty();)
        words.push_back(word);
    return words;
}

std::string_view trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(BLANKS), text.size()));
    return text.substr(0, text.find_last_not_of(BLANKS) + 1);
}

bool sameText(std::string_view text, std::string_view other) {
    return text.size() == other.size() &&
           std::equal(text.begin(), text.end(), other.begin(), sameLetter);
}

bool holdsText(std::string_view text, std::string_view part) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(), sameLetter) !=
               text.end() ||
           part.empty();
}

std::string_view before(std::string_view text, std::string_view mark) {
    const std::size_t at = text.find(mark);
    return at == text.npos ? std::string_view() : trimmed(text.substr(0, at));
}

std::string_view behind(std::string_view text, std::string_view mark) {
    const std::size_t at = text.find(mark);
    return at == text.npos ? std::string_view() : trimmed(text.substr(at + mark.size()));
}

std::optional<std::string_view> labelled(std::string_view line, std::string_view label) {
    const std::size_t colon = line.find(':');
    if (colon == line.npos)
        return std::nullopt;
    // Letter by letter, passing over the blanks before a "#".
    std::string_view said = trimmed(line.substr(0, colon));
    for (const char c : label) {
        if (c == '#')
            said.remove_prefix(std::min(said.find_first_not_of(BLANKS), said.size()));
        if (said.empty() || !sameLetter(said.front(), c))
            return std::nullopt;
        said.remove_prefix(1);
    }
    if (!said.empty())
        return std::nullopt;
    return trimmed(line.substr(colon + 1));
}

std::string bare(std::string_view text) {
    return std::string(trimmed(without(text, ";:")));
}

std::string solid(std::string_view text) {
    return without(text, ";: \t");
}

std::optional<std::uint64_t> wholeNumber(std::string_view text) {
    std::uint64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc() || last != end)
        return std::nullopt;
    return value;
}

std::string_view digitsBehind(std::string_view text, std::string_view mark) {
    for (std::size_t at = text.find(mark); at != text.npos; at = text.find(mark, at + 1)) {
        const std::string_view rest = text.substr(at + mark.size());
        const std::string_view digits = rest.substr(0, rest.find_first_not_of("0123456789"));
        if (!digits.empty())
            return digits;
    }
    return {};
}

bool dropNewline(std::string& line) {
    if (line.empty() || line.back() != '\n')
        return false;
    line.pop_back();
    return true;
}

int leadingInteger(std::string_view text, int fallback) {
    const std::string copy(text.substr(0, text.find('\0')));
    char* end = nullptr;
    const long value = std::strtol(copy.c_str(), &end, 10); // clamps to long
    if (end == copy.c_str())
        return fallback;
    return static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX));
}

std::array<BYTE, 2> itemCount(int count) {
    return {static_cast<BYTE>(count % COUNT_BASE), static_cast<BYTE>(count / COUNT_BASE)};
}
