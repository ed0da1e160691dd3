#include "tools/newfs.h"

#include "text.h"

command_line newfsDry(const std::string& partition) {
    return {"newfs", "-N", partition};
}

std::optional<std::uint64_t> parseNewfs(std::string_view text) {
    std::optional<std::uint64_t> size;
    for (std::string_view line, rest = text; !size.has_value() && nextLine(rest, line);)
        size = wholeNumber(digitsBehind(line, "block size "));
    return size;
}
