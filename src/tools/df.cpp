#include "tools/df.h"

#include "text.h"

#include <cctype>
#include <utility>

namespace {

constexpr std::uint64_t BLOCK = 1024;

std::optional<std::uint64_t> bytesOf(std::string_view blocks) {
    const auto number = wholeNumber(blocks);
    if (!number.has_value() || *number > INT64_MAX / BLOCK)
        return std::nullopt;
    return *number * BLOCK;
}

// Of the words behind a device's name: total, used, available.
std::optional<space_use> spaceUse(std::string_view words) {
    const auto total = bytesOf(nextWord(words));
    const auto used = bytesOf(nextWord(words));
    std::string_view last = nextWord(words);
    const bool negative = last.substr(0, 1) == "-";
    last.remove_prefix(negative ? 1 : 0);
    const auto available = bytesOf(last);
    if (!total.has_value() || !used.has_value() || !available.has_value())
        return std::nullopt;
    const auto amount = static_cast<std::int64_t>(*available);
    return space_use{*total, *used, negative ? -amount : amount};
}

bool isWordLetter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

} // namespace

command_line dfLocal() {
    return {"df", "-k", "-l"};
}

space_table parseSpaceTable(std::string_view text) {
    space_table table;
    std::string name; // that was alone on its line
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        if (trimmed(line).empty())
            continue;
        const bool alone = wordOf(line, 1).empty();
        if (alone && !name.empty())
            table.push_back(std::exchange(name, ""));
        name.append(name.empty() ? "" : " ").append(line);
        if (!alone)
            table.push_back(std::exchange(name, ""));
    }
    if (!name.empty())
        table.push_back(name);
    return table;
}

std::optional<space_use> useOf(const space_table& table, std::string_view device) {
    std::optional<space_use> found;
    for (const std::string_view line : table) {
        if (line.substr(0, device.size()) != device || line.size() == device.size())
            continue;
        std::string_view rest = line.substr(device.size());
        const bool exact = rest.front() == ' ' || rest.front() == '\t';
        if (!exact && (isWordLetter(rest.front()) || found.has_value()))
            continue;
        if (!exact)
            nextWord(rest);
        if (const auto use = spaceUse(rest); use.has_value())
            found = use;
    }
    return found;
}
