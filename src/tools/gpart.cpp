#include "tools/gpart.h"

#include "text.h"

#include <optional>

namespace {

constexpr std::size_t NAME_WORD = 2;
constexpr std::size_t SIZE_WORD = 4;
constexpr std::string_view UNITS = "BKMGT"; // each 1024 times the one before
constexpr std::size_t DECIMALS_MOST = 6;    // with more the remainder could pass 64 bits

// Without the marks in brackets, such as "[active]", and without parentheses.
std::string plainRow(std::string_view line) {
    std::string result;
    bool in_mark = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        in_mark = in_mark || (line[i] == '[' && line.find(']', i) != line.npos);
        if (!in_mark && line[i] != '(' && line[i] != ')')
            result += line[i];
        in_mark = in_mark && line[i] != ']';
    }
    return result;
}

// "15G" or "1.5G", rounded down to whole bytes.
std::optional<std::uint64_t> sizeOf(std::string_view text) {
    const std::size_t unit = text.empty() ? text.npos : UNITS.find(text.back());
    if (unit == text.npos)
        return std::nullopt;
    text.remove_suffix(1);
    const std::string_view whole = text.substr(0, text.find('.'));
    const std::string_view decimals =
        whole.size() == text.size() ? "0" : text.substr(whole.size() + 1);
    const auto units = wholeNumber(whole);
    const auto part = wholeNumber(decimals);
    const std::uint64_t factor = std::uint64_t{1} << (10 * unit);
    if (!units.has_value() || !part.has_value() || decimals.size() > DECIMALS_MOST ||
        *units >= UINT64_MAX / factor)
        return std::nullopt;
    std::uint64_t scale = 1;
    for (std::size_t i = 0; i < decimals.size(); ++i)
        scale *= 10;
    return *units * factor + *part * factor / scale;
}

} // namespace

command_line gpartShow() {
    return {"gpart", "show", "-p"};
}

partition_sizes parseGpart(std::string_view text) {
    partition_sizes sizes;
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        const std::string row = plainRow(line);
        if (const auto bytes = sizeOf(wordOf(row, SIZE_WORD)); bytes.has_value())
            sizes.emplace(wordOf(line, NAME_WORD), *bytes);
    }
    return sizes;
}
