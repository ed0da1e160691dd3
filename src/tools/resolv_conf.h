// The file /etc/resolv.conf: the name servers.
#pragma once

#include <string>
#include <string_view>
#include <vector>

constexpr const char* RESOLV_CONF = "/etc/resolv.conf";

// The second word of every line that mentions "nameserver", whatever stands before it there.
std::vector<std::string> parseResolvConf(std::string_view text);
