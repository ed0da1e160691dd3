#include "service/agent_processes.h"

#include "state/flags.h"
#include "text.h"
#include "tools/ps.h"

#include <string>
#include <unistd.h>

namespace {

constexpr std::string_view AGENT_NAME = "IPMIVYN";

// The first word is the program, its folder left out; a name in brackets is one whose arguments the
// system no longer tells.
bool isService(const listed_process& process) {
    std::string_view words = process.command;
    std::string_view program = nextWord(words);
    program.remove_prefix(program.rfind('/') + 1);
    if (program.find(AGENT_NAME) == program.npos)
        return false;
    return nextWord(words) != "-agent" || nextWord(words) == "start-service";
}

} // namespace

int getServiceCount() {
    const program_answer listing = tools.run(psCommand(), {});
    if (listing.text.empty())
        return -1;
    int count = 1; // the caller
    for (const listed_process& process : parsePs(listing.text))
        if (process.pid != getpid() && isService(process))
            ++count;
    return std::to_string(count).front() - '0' - 1;
}

int getVYNStatus() {
    return getServiceCount() < 1 ? 2 : getPauseFlag();
}
