// "netstat -rn -4" and "netstat -rn -6": the routing tables. The columns of a table are named by
// its header, which differs between releases (Refs and Use until 9) and with -W (Mtu, Nhop#).
#pragma once

#include "tools/program.h"

#include <string>
#include <string_view>
#include <vector>

constexpr std::size_t NETSTAT_BYTES = 262144; // the default route comes first; the rest of a
                                              // router's table is not wanted

struct listed_route {
    std::string destination; // "default", an address, or a network with its length
    std::string gateway;     // an address with its %zone, or "link#2"
    std::string interface;
    bool maybe_cut = false; // the interface's name fills its column, six characters or more
};

command_line netstatCommand(const char* family); // "-4" or "-6"

// The routes in their order; without a header line there are none.
std::vector<listed_route> parseNetstat(std::string_view text);
