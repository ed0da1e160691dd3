#include "tools/netstat.h"

#include "text.h"

#include <algorithm>

command_line netstatCommand(const char* family) {
    return {"netstat", "-rn", family};
}

std::vector<listed_route> parseNetstat(std::string_view text) {
    std::vector<listed_route> routes;
    std::size_t interface_column = 0; // 0: no header yet
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        const std::vector<std::string_view> words = wordsOf(line);
        if (words.size() < 2)
            continue;
        if (words[0] == "Destination")
            interface_column = static_cast<std::size_t>(
                std::find(words.begin(), words.end(), "Netif") - words.begin());
        else if (interface_column != 0)
            routes.push_back({std::string(words[0]), std::string(words[1]),
                              std::string(wordOf(line, interface_column))});
    }
    return routes;
}
