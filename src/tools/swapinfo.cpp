#include "tools/swapinfo.h"

#include "text.h"

#include <algorithm>

command_line swapinfo() {
    return {"swapinfo", "-k"};
}

bool isSwap(const space_table& table, std::string_view device) {
    return std::any_of(table.begin(), table.end(),
                       [&](const std::string& line) { return wordOf(line, 0) == device; });
}
