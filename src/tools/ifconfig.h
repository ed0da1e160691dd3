// "ifconfig -a": every interface with its addresses and its medium. An interface begins in the
// first column with NAME ": flags="; its lines are indented.
#pragma once

#include "tools/program.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

struct ifconfig_interface {
    std::vector<std::string> inet6; // addresses with their %zone
    std::vector<std::string> media; // words that may name the medium in use, the likeliest first
    std::string status;             // its first word: "active", "no" (carrier), "associated" ...
};

command_line ifconfigCommand();

// By name. Empty when the text has no form of such an answer.
std::map<std::string, ifconfig_interface> parseIfconfig(std::string_view text);
