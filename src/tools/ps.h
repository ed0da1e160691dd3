// "ps -x": the processes of the calling user.
#pragma once

#include "tools/program.h"

#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

struct listed_process {
    pid_t pid = 0;
    std::string command; // with its arguments; empty for one that has ended
    std::string listing; // the whole line
};

command_line psCommand();

// Every line that begins with a number, whatever it says besides.
std::vector<listed_process> parsePs(std::string_view text);
