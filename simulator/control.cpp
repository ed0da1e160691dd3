#include "control.h"

#include "records.h"
#include "show.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace bmcsim {

namespace {

// ---- arguments ----

// What the words behind the name of a command or a condition say.
struct Arguments {
    std::vector<uint32_t> numbers;
    Lines words; // keys and such
    Target target;
    std::string text; // the rest of the line
    Bytes bytes;      // the same as hexadecimal
};

// The arguments that are numbers, and their limits.
constexpr struct {
    const char* names;
    uint32_t high;
} NUMBERS[] = {
    {"SELECTOR LIST INDEX OPTION VALUE ID CC AOC GROUP SLOT", 255},
    {"SIZE BYTES", 65535},
    {"N COUNT MS SECONDS", UINT32_MAX},
};

bool among(const std::string& word, const Lines& words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

bool takeArgument(const std::string& kind, const std::string& word, Arguments& arguments) {
    for (const auto& [names, high] : NUMBERS) {
        if (!among(kind, words(names)))
            continue;
        const auto number = parseNumber((among(kind, {"ID", "CC"}) ? "0x" : "") + word, high);
        arguments.numbers.push_back(number.value_or(0));
        return number && (kind != "LIST" || isList(static_cast<uint8_t>(*number)));
    }
    if (kind == "TARGET") {
        const auto target = parseTarget(word);
        arguments.target = target.value_or(Target());
        return target.has_value();
    }
    arguments.words.push_back(word);
    if (kind == "SECTION")
        return among(word, words(sectionNames()));
    return (kind[0] >= 'A' && kind[0] <= 'Z') || among(word, splitText(kind, "|"));
}

// Takes the first word off a line.
std::string takeWord(std::string& line) {
    constexpr const char* BLANKS = " \t\r\n";
    line.erase(0, line.find_first_not_of(BLANKS));
    std::string word = line.substr(0, line.find_first_of(BLANKS));
    line.erase(0, word.size());
    line.erase(0, line.find_first_not_of(BLANKS));
    line.erase(line.find_last_not_of(BLANKS) + 1);
    return word;
}

// Takes a line apart as a pattern says, word by word. Nothing when it is not like that.
//   on|off       one of these words
//   LETTERS      a number where the table above has its limit, else any word
//   LETTERS...   the rest of the line
//   [LETTERS]    may be left out with all that follows
std::optional<Arguments> readArguments(const std::string& pattern, const std::string& line) {
    Arguments arguments;
    std::string rest = line;
    for (std::string kind : words(pattern)) {
        if (kind[0] == '[' && rest.empty())
            return arguments;
        if (kind[0] == '[')
            kind = kind.substr(1, kind.size() - 2);
        if (rest.empty())
            return {};
        if (kind.back() != '.') {
            if (!takeArgument(kind, takeWord(rest), arguments))
                return {};
            continue;
        }
        const auto bytes = kind == "HEX..." ? parseHex(rest) : Bytes();
        if (!bytes)
            return {};
        arguments.text = rest;
        arguments.bytes = *bytes;
        rest.clear();
    }
    return rest.empty() ? std::optional(arguments) : std::nullopt;
}

// A command or a condition at work.
struct Call : Arguments {
    Bmc& bmc;
    size_t before = 0;       // values at the time of the call, if a selector is the first number
    uint64_t generation = 0; // starts of the BMC by then
    Outcome out = {};
};

template <typename Run>
struct Row {
    const char* name;
    const char* arguments;
    const char* meaning;
    Run run;
};

const Stored& storedIn(const Call& call) {
    return storedUnder(call.bmc.parameters, call.numbers.at(0));
}

// What the first row of that name whose pattern fits would do, and with what.
template <typename Run, size_t SIZE>
std::optional<std::pair<Run, Call>> readCall(const Row<Run> (&table)[SIZE], Bmc& bmc,
                                             std::string line) {
    const std::string name = takeWord(line);
    for (const Row<Run>& row : table) {
        const auto arguments = name == row.name ? readArguments(row.arguments, line) : std::nullopt;
        if (!arguments)
            continue;
        Call call = {*arguments, bmc};
        call.before = call.numbers.empty() ? 0 : storedIn(call).uploads;
        call.generation = bmc.generation;
        return std::pair(row.run, call);
    }
    return {};
}

template <typename Run, size_t SIZE>
std::string usageOf(const Row<Run> (&table)[SIZE]) {
    std::string usage;
    for (const Row<Run>& row : table)
        usage += format("  %-11s %-25s %s\n", row.name, row.arguments, row.meaning);
    return usage;
}

// ---- conditions ----

bool anyContains(const Lines& lines, const std::string& text) {
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
        return line.find(text) != std::string::npos;
    });
}

bool anyEquals(const Lines& lines, const std::string& text) {
    return std::find(lines.begin(), lines.end(), text) != lines.end();
}

bool listComplete(const Call& call) {
    const Stored& list = storedIn(call);
    return list.announced == call.numbers[1] && list.texts.size() == list.announced;
}

bool uploadsCame(const Call& call) {
    const size_t count = call.numbers.size() > 1 ? call.numbers[1] : 1;
    const size_t before = call.bmc.generation == call.generation ? call.before : 0;
    return storedIn(call).uploads >= before + count;
}

constexpr Row<bool (*)(const Call&)> CONDITIONS[] = {
    {"raw", "SELECTOR TEXT...", "a last value of the selector contains TEXT (escaped form)",
     [](const Call& call) { return anyContains(rawValues(call.bmc, call.numbers[0]), call.text); }},
    {"equals", "SELECTOR [TEXT...]", "a last value of the selector is TEXT",
     [](const Call& call) { return anyEquals(rawValues(call.bmc, call.numbers[0]), call.text); }},
    {"selector", "LIST count N", "the list is complete and has N items", listComplete},
    {"uploads", "SELECTOR N", "at least N values came since the BMC's start",
     [](const Call& call) { return storedIn(call).uploads >= call.numbers[1]; }},
    {"next", "SELECTOR [N]", "N (1) further values come from now on", uploadsCame},
    {"sel", "count N", "the event log has N lines or more",
     [](const Call& call) { return call.bmc.sel.records.size() >= call.numbers[0]; }},
    {"sel", "TEXT...", "a line of the event log contains TEXT",
     [](const Call& call) { return anyContains(selLines(call.bmc), call.text); }},
    {"show", "SECTION TEXT...", "a line of the section contains TEXT",
     [](const Call& call) { return anyContains(showSection(call.bmc, call.words[0]), call.text); }},
    {"released", "N", "at least N posted commands were released",
     [](const Call& call) { return call.bmc.slot.released >= call.numbers[0]; }},
    {"clients", "N", "so many are connected",
     [](const Call& call) { return call.bmc.clients == call.numbers[0]; }},
    {"quiet", "MS", "no request for so long",
     [](const Call& call) {
         return call.bmc.ledger.nowMs - call.bmc.lastRequestMs >= int64_t{call.numbers[0]};
     }},
};

void waitFor(Call& call) {
    std::string line = call.text;
    const bool negated = line.rfind("not ", 0) == 0;
    const auto condition = readCall(CONDITIONS, call.bmc, negated ? line.substr(4) : line);
    if (!condition) {
        call.out.error = "no such condition: " + line;
        return;
    }
    const auto holds = [=] { return condition->first(condition->second) != negated; };
    call.out.wait = {holds, call.bmc.ledger.nowMs + 1000 * int64_t{call.numbers[0]}, line};
}

// ---- commands ----

void post(Call& call, const std::string& text) {
    const auto index = static_cast<uint8_t>(call.numbers[0]);
    postCommand(call.bmc.slot, call.bmc.ledger, {SELECTOR_COMMAND, index, text.substr(0, 65535)});
}

void postKey(Call& call) {
    std::string text = "request;" + call.words[0] + ";";
    for (size_t i = 1; i < call.numbers.size(); i++)
        text += static_cast<char>(call.numbers[i]);
    post(call, text);
}

void order(Call& call) {
    for (size_t i = 0; i < std::size(FAULT_KINDS); i++) {
        const auto given = readArguments(std::string(FAULT_KINDS[i]) + " [COUNT]", call.text);
        if (!given)
            continue;
        const std::vector<uint32_t>& numbers = given->numbers;
        const size_t own = std::min(numbers.size(), words(FAULT_KINDS[i]).size() - 1);
        Fault fault = {
            call.target, static_cast<FaultKind>(i), given->bytes, own > 0 ? numbers[0] : 0, {}};
        if (fault.kind == FaultKind::CODE)
            fault.answer = {static_cast<uint8_t>(fault.argument)};
        if (numbers.size() > own)
            fault.left = numbers[own];
        if (fault.left != 0U)
            orderFault(call.bmc.faults, fault);
        return;
    }
    call.out.error = "no such fault: " + call.text;
}

void setWatchdog(Call& call) {
    const std::string& which = call.words[0];
    Watchdog& watchdog = call.bmc.watchdog;
    watchdog.answersNew = which == "b6" || which == "both";
    watchdog.answersOld = which == "b3" || which == "both";
    watchdog.running = watchdog.running && which != "none";
}

void offer(Call& call, uint32_t id, const Bytes& content) {
    OfferedFile file;
    file.content = content;
    call.bmc.files.offered[static_cast<uint8_t>(id)] = file;
}

void offerFile(Call& call) {
    const std::ifstream stream(call.text, std::ios::binary);
    std::ostringstream content;
    if (!stream.is_open() || !(content << stream.rdbuf()))
        call.out.error = "cannot read " + call.text;
    const std::string text = content.str();
    if (call.out.error.empty())
        offer(call, call.numbers[0], Bytes(text.begin(), text.end()));
}

void delayFile(Call& call) {
    const auto found = call.bmc.files.offered.find(static_cast<uint8_t>(call.numbers[0]));
    if (found != call.bmc.files.offered.end())
        found->second.preparingPolls = call.numbers[1];
    else
        call.out.error = "no such file";
}

void offerCapability(Call& call) {
    const size_t size = call.numbers.empty() ? 32 : call.numbers[0];
    offer(call, FILE_CAPABILITY, capabilityFile(call.words[0] == "on", size));
}

void offerDriveMap(Call& call) {
    std::vector<MappedDrive> drives;
    for (const std::string& word : words(call.text)) {
        const size_t equals = word.rfind('=');
        const auto slot = parseNumber(word.substr(equals + 1), 65535);
        if (equals == std::string::npos || !slot)
            call.out.error = "no serial number and slot: " + word;
        else
            drives.push_back({word.substr(0, equals), static_cast<uint16_t>(*slot)});
    }
    if (call.out.error.empty())
        offer(call, FILE_DRIVE_MAP, driveMapFile(drives));
}

constexpr Row<void (*)(Call&)> COMMANDS[] = {
    {"show", "", "what the BMC knows, in words",
     [](Call& call) { call.out.lines = showAll(call.bmc); }},
    {"show", "SECTION", "the same of one section",
     [](Call& call) { call.out.lines = showSection(call.bmc, call.words[0]); }},
    {"raw", "SELECTOR", "the last values of a selector, escaped",
     [](Call& call) { call.out.lines = rawValues(call.bmc, call.numbers[0]); }},
    {"sel", "", "the event log in words", [](Call& call) { call.out.lines = selLines(call.bmc); }},
    {"sel", "clear", "empty it", [](Call& call) { clearSel(call.bmc.sel, call.bmc.ledger); }},
    {"complaints", "", "what did not add up",
     [](Call& call) { call.out.lines = call.bmc.ledger.complaints; }},
    {"complaints", "clear", "forget it", [](Call& call) { call.bmc.ledger.complaints.clear(); }},
    {"requests", "", "requests and bytes by command and selector",
     [](Call& call) { call.out.lines = trafficLines(call.bmc); }},
    {"requests", "reset", "count from 0 again", [](Call& call) { call.bmc.traffic.clear(); }},
    {"trace", "on|off", "keep a log of all requests",
     [](Call& call) { call.bmc.ledger.tracing = call.words[0] == "on"; }},
    {"log", "", "print that log", [](Call& call) { call.out.lines = call.bmc.ledger.trace; }},
    {"log", "clear", "empty it", [](Call& call) { call.bmc.ledger.trace.clear(); }},
    {"wait", "SECONDS CONDITION...", "reply when it holds", waitFor},
    {"restart", "", "restart the BMC: values gone, flag 0",
     [](Call& call) { restartBmc(call.bmc); }},
    {"post", "INDEX KEY OPTION [VALUE]", "post a command request (numbers)", postKey},
    {"postraw", "INDEX HEX...", "post any text as a command request",
     [](Call& call) { post(call, std::string(call.bytes.begin(), call.bytes.end())); }},
    {"fault", "TARGET KIND...", "let something go wrong", order},
    {"answer", "TARGET HEX...", "answer one request with code and data",
     [](Call& call) {
         orderFault(call.bmc.faults, {call.target, FaultKind::ANSWER, call.bytes, 0, 1});
     }},
    {"delay", "MS", "every answer takes so long",
     [](Call& call) { call.bmc.faults.delayMs = call.numbers[0]; }},
    {"nofault", "", "clear faults, scripted answers and delay",
     [](Call& call) { call.bmc.faults = Faults(); }},
    {"watchdog", "b6|b3|both|none", "which watchdog command is answered", setWatchdog},
    {"clock", "SECONDS", "set the BMC's clock (seconds since 1970)",
     [](Call& call) { setSelTime(call.bmc.sel, call.bmc.ledger, call.numbers[0]); }},
    {"file", "ID preparing N", "keep it in preparation for N polls", delayFile},
    {"file", "ID PATH...", "offer a file for download (ID hexadecimal)", offerFile},
    {"capability", "on|off [SIZE]", "offer a capability file", offerCapability},
    {"drivemap", "SERIAL=SLOT...", "offer a drive map", offerDriveMap},
    {"nvme", "AOC GROUP SLOT SERIAL", "put a drive into a position",
     [](Call& call) {
         const auto& at = call.numbers;
         call.bmc.panel.bays[{at[0], at[1], at[2]}] = {call.words[0], -1, 0};
     }},
    {"disconnect", "", "drop all connections",
     [](Call& call) { call.out.action = Action::DISCONNECT; }},
    {"away", "", "drop all connections and accept no more",
     [](Call& call) { call.out.action = Action::AWAY; }},
    {"back", "", "accept connections again", [](Call& call) { call.out.action = Action::BACK; }},
    {"help", "", "this list", [](Call& call) { call.out.lines = splitText(commandUsage(), "\n"); }},
    {"quit", "", "end the simulator", [](Call& call) { call.out.action = Action::QUIT; }},
};

} // namespace

Outcome runCommand(Bmc& bmc, const std::string& line) {
    const Lines given = words(line);
    Outcome failed;
    if (given.empty() || given[0][0] == '#')
        return failed;
    auto command = readCall(COMMANDS, bmc, line);
    failed.error = "no such command: " + line + " (try help)";
    if (!command)
        return failed;
    command->first(command->second);
    return command->second.out;
}

std::string commandUsage() {
    std::string kinds;
    for (const char* kind : FAULT_KINDS)
        kinds += std::string(kinds.empty() ? "" : ", ") + kind;
    return usageOf(COMMANDS) + "SECTION: " + sectionNames() +
           "\nTARGET: all, or NetFn/command[/first data byte] in hexadecimal, such as 06/58/C0" +
           "\nKIND: " + kinds + "; and for how many requests, if not for all" +
           "\nCONDITION, which may have \"not\" in front:\n" + usageOf(CONDITIONS);
}

} // namespace bmcsim
