#include "tools/resolv_conf.h"

#include "text.h"

#include <algorithm>

std::vector<std::string> parseResolvConf(std::string_view text) {
    std::vector<std::string> servers;
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        if (line.find("nameserver") == line.npos)
            continue;
        std::string& server = servers.emplace_back(wordOf(line, 1));
        // A program's answer comes without control bytes; a file does not.
        server.erase(std::remove_if(server.begin(), server.end(),
                                    [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; }),
                     server.end());
    }
    return servers;
}
