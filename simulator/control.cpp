#include "control.h"

#include "control_setup.h"
#include "show.h"

namespace bmcsim {

static Outcome failure(const std::string& text) {
    Outcome outcome;
    outcome.error = text;
    return outcome;
}

static Outcome success(Lines lines = {}) {
    Outcome outcome;
    outcome.lines = std::move(lines);
    return outcome;
}

static Outcome showCommand(Bmc& bmc, const CommandLine& line) {
    if (line.words.empty())
        return success(showAll(bmc));
    bool known = false;
    const Lines lines = showSection(bmc, line.words[0], known);
    return known ? success(lines) : failure("sections: " + sectionNames());
}

static Outcome rawCommand(Bmc& bmc, const CommandLine& line) {
    int64_t selector = 0;
    if (line.words.size() != 1 || !parseNumber(line.words[0], 0, 255, selector))
        return failure("raw SELECTOR");
    return success(rawValues(bmc, static_cast<uint8_t>(selector)));
}

static Outcome selCommand(Bmc& bmc, const CommandLine& line) {
    if (line.words.empty())
        return success(selLines(bmc));
    if (line.words[0] != "clear")
        return failure("sel [clear]");
    bmc.sel.records.clear();
    bmc.sel.overflow = false;
    return success();
}

static Outcome requestsCommand(Bmc& bmc, const CommandLine& line) {
    if (line.words.empty())
        return success(trafficLines(bmc));
    if (line.words[0] != "reset")
        return failure("requests [reset]");
    bmc.traffic.clear();
    return success();
}

static Outcome complaintsCommand(Bmc& bmc, const CommandLine& line) {
    if (line.words.empty())
        return success(bmc.ledger.complaints);
    if (line.words[0] != "clear")
        return failure("complaints [clear]");
    bmc.ledger.complaints.clear();
    bmc.ledger.complaintCount = 0;
    return success();
}

static Outcome traceCommand(Bmc& bmc, const CommandLine& line) {
    if (line.rest != "on" && line.rest != "off")
        return failure("trace on|off");
    bmc.ledger.tracing = line.rest == "on";
    return success();
}

static Outcome logCommand(Bmc& bmc, const CommandLine& line) {
    if (line.rest == "clear") {
        bmc.ledger.trace.clear();
        return success();
    }
    return success(Lines(bmc.ledger.trace.begin(), bmc.ledger.trace.end()));
}

static Outcome waitCommand(Bmc& bmc, const CommandLine& line) {
    int64_t seconds = 0;
    if (line.words.size() < 2 || !parseNumber(line.words[0], 0, 86400, seconds))
        return failure("wait SECONDS [not] CONDITION");
    PendingWait wait;
    wait.text = line.rest.substr(line.rest.find(line.words[0]) + line.words[0].size());
    const std::string error = parseCondition(bmc, wait.text, wait.holds);
    if (!error.empty())
        return failure(error);
    wait.untilMs = bmc.ledger.nowMs + 1000 * seconds;
    Outcome outcome;
    outcome.wait = wait;
    return outcome;
}

static Outcome restartCommand(Bmc& bmc, const CommandLine&) {
    restartBmc(bmc);
    return success();
}

static Outcome helpCommand(Bmc&, const CommandLine&) {
    return success(splitText(commandUsage(), "\n"));
}

template <Action ACTION>
static Outcome actionCommand(Bmc&, const CommandLine&) {
    Outcome outcome;
    outcome.action = ACTION;
    return outcome;
}

// Commands that set something up: an error text, or nothing.
template <std::string (*SETUP)(Bmc&, const CommandLine&)>
static Outcome setupCommand(Bmc& bmc, const CommandLine& line) {
    return failure(SETUP(bmc, line));
}

struct CommandRow {
    const char* name;
    const char* arguments;
    const char* meaning;
    Outcome (*run)(Bmc&, const CommandLine&);
};

static const CommandRow COMMANDS[] = {
    {"show", "[SECTION]", "what the BMC knows, in words", showCommand},
    {"raw", "SELECTOR", "the last values of a selector, escaped", rawCommand},
    {"sel", "[clear]", "the event log in words", selCommand},
    {"complaints", "[clear]", "what did not add up", complaintsCommand},
    {"requests", "[reset]", "requests and bytes by command and selector", requestsCommand},
    {"trace", "on|off", "keep a log of all requests", traceCommand},
    {"log", "[clear]", "print that log", logCommand},
    {"wait", "SECONDS [not] CONDITION", "reply when it holds", waitCommand},
    {"restart", "", "restart the BMC: values gone, flag 0", restartCommand},
    {"post", "INDEX KEY OPTION [VALUE]", "post a command request (numbers)",
     setupCommand<setupPost>},
    {"postraw", "INDEX HEX", "post any text as a command request", setupCommand<setupPostRaw>},
    {"unpost", "", "withdraw all posted commands", setupCommand<setupUnpost>},
    {"fault", "TARGET KIND [ARGUMENT] [COUNT]", "let something go wrong", setupCommand<setupFault>},
    {"answer", "TARGET HEX", "answer one request with code and data", setupCommand<setupAnswer>},
    {"delay", "MS", "every answer takes so long", setupCommand<setupDelay>},
    {"nofault", "", "clear faults, scripted answers and delay", setupCommand<setupNoFault>},
    {"watchdog", "b6|b3|both|none", "which watchdog command is answered",
     setupCommand<setupWatchdog>},
    {"ipmi", "2.0|1.5", "version in the device id", setupCommand<setupIpmi>},
    {"clock", "SECONDS", "set the BMC's clock (seconds since 1970)", setupCommand<setupClock>},
    {"flag", "0|1", "set the restart-clean flag", setupCommand<setupFlag>},
    {"capacity", "RECORDS", "size of the event log", setupCommand<setupCapacity>},
    {"file", "ID PATH | ID hex HEX | ID length N | ID preparing N | ID none",
     "offer a file for download (ID hexadecimal)", setupCommand<setupFile>},
    {"capability", "on|off [SIZE]", "offer a capability file", setupCommand<setupCapability>},
    {"drivemap", "[SERIAL=SLOT]...", "offer a drive map", setupCommand<setupDriveMap>},
    {"nvme", "AOC GROUP SLOT SERIAL | none", "put a drive into a position",
     setupCommand<setupNvme>},
    {"disconnect", "", "drop all connections", actionCommand<Action::DISCONNECT>},
    {"away", "", "drop all connections and accept no more", actionCommand<Action::AWAY>},
    {"back", "", "accept connections again", actionCommand<Action::BACK>},
    {"help", "", "this list", helpCommand},
    {"quit", "", "end the simulator", actionCommand<Action::QUIT>},
};

Outcome runCommand(Bmc& bmc, const std::string& text) {
    CommandLine line;
    line.words = words(text);
    if (line.words.empty() || line.words[0][0] == '#')
        return success();
    const std::string name = line.words[0];
    line.rest = text.substr(text.find(name) + name.size());
    line.rest.erase(0, std::min(line.rest.find_first_not_of(" \t"), line.rest.size()));
    while (!line.rest.empty() && isspace(static_cast<unsigned char>(line.rest.back())))
        line.rest.pop_back();
    line.words.erase(line.words.begin());
    for (const CommandRow& row : COMMANDS)
        if (name == row.name)
            return row.run(bmc, line);
    return failure("unknown command " + name + " (try help)");
}

std::string commandUsage() {
    std::string usage;
    for (const CommandRow& row : COMMANDS)
        usage += format("  %-11s %-40s %s\n", row.name, row.arguments, row.meaning);
    usage += "Sections: " + sectionNames() + "\n";
    usage += "TARGET: all, or NetFn/command[/first data byte] in hexadecimal, such as 06/58/C0\n";
    usage += std::string("KIND: ") + faultUsage() + "\n";
    usage += std::string("CONDITION:\n") + conditionUsage();
    return usage;
}

} // namespace bmcsim
