#include "tools/ps.h"

#include "text.h"

#include <limits>

command_line psCommand() {
    return {"ps", "-x"};
}

// PID, terminal, state and time stand before the command; the state of an ended one begins with Z.
std::vector<listed_process> parsePs(std::string_view text) {
    std::vector<listed_process> processes;
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        std::string_view words = line;
        const auto pid = wholeNumber(nextWord(words));
        if (!pid.has_value() || *pid > std::numeric_limits<pid_t>::max())
            continue;
        nextWord(words);
        const bool ended = nextWord(words).substr(0, 1) == "Z";
        nextWord(words);
        processes.push_back({static_cast<pid_t>(*pid), std::string(ended ? "" : trimmed(words)),
                             std::string(line)});
    }
    return processes;
}
