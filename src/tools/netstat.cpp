#include "tools/netstat.h"

#include "text.h"

#include <algorithm>

command_line netstatCommand(const char* family) {
    return {"netstat", "-rn", family};
}

namespace {

constexpr std::size_t NARROWEST_NETIF = 6;

// From how many characters on a name may have been cut. The column reaches from the one before,
// whose words end below its title, but for the flags, which are six characters from their left. One
// or two of the blanks between belong to neither: the width is even.
std::size_t cutFrom(std::string_view header, const std::vector<std::string_view>& titles,
                    std::size_t column) {
    const auto start = [&](std::size_t title) {
        return static_cast<std::size_t>(titles[title].data() - header.data());
    };
    const std::string_view before = titles[column - 1];
    const std::size_t room = start(column) + titles[column].size() - start(column - 1) -
                             (before == "Flags" ? 6 : before.size());
    const std::size_t width = room - std::min<std::size_t>(room, 2);
    return std::max(NARROWEST_NETIF, width + width % 2);
}

} // namespace

std::vector<listed_route> parseNetstat(std::string_view text) {
    std::vector<listed_route> routes;
    std::size_t interface_column = 0, cut_from = 0; // 0: no header yet
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        const std::vector<std::string_view> words = wordsOf(line);
        if (words.size() < 2)
            continue;
        if (words[0] == "Destination") {
            interface_column = static_cast<std::size_t>(
                std::find(words.begin(), words.end(), "Netif") - words.begin());
            if (interface_column < words.size())
                cut_from = cutFrom(line, words, interface_column);
        } else if (interface_column != 0) {
            const std::string_view interface = wordOf(line, interface_column);
            routes.push_back({std::string(words[0]), std::string(words[1]), std::string(interface),
                              interface.size() >= cut_from});
        }
    }
    return routes;
}
