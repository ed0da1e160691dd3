#include "stage.h"

#include "bmc/restart_monitor.h"
#include "config/logs.h"
#include "state/flags.h"
#include "tools/program.h"

#include <algorithm>
#include <cstdio>

using sim::stage;

// ---- Logs and flags. Those of the agent are files and shared memory of fixed names.

const char* const log_file = "log";
const char* const hdd_file = "hdd";
const char* const time_file = "time";

bool writeFile(const char*, const char*, std::string_view) {
    return true;
}
void printLog(std::string_view, std::string_view) {}
void printHexLog(std::string_view, unsigned) {}
void printIntLog(std::string_view, int) {}
void printErrLog(std::string_view title, std::string_view value) {
    sim::note("  error log: " + std::string(title) + " " + std::string(value));
}
void printErrIntLog(std::string_view title, int value) {
    printErrLog(title, std::to_string(value));
}
void printCommandLog(std::string_view, std::string_view) {}
void printHddMappingLog(std::string_view title, std::string_view value, int first) {
    if (first == 1)
        stage.drive_map.clear();
    stage.drive_map.append(title).append(",").append(value).append("\n");
}
void restartLog() {}

namespace {
int looks_left = 0; // of a worker at the stop flag, before it is set
} // namespace

std::unique_ptr<shm> stop_shm, pause_shm, cur_pause_shm;
shm::~shm() = default;
int getStopFlag() {
    return looks_left-- > 0 ? 0 : 1;
}
int getPauseFlag() {
    return 0;
}
int getCurPauseFlag() {
    return 0;
}
int setStopFlag(int) {
    return 0;
}
int setPauseFlag(int) {
    return 0;
}
int setCurPauseFlag(int) {
    return 0;
}
void removeHeldFlags() {}
bool belongsToService() {
    return true;
}
bool stopRequested() {
    return false;
}

namespace sim {

Stage stage;

const char* const TROUBLE_NAMES[] = {
    "missing",   "not started",     "hung",     "cut",        "garbage",   "prints nothing",
    "fails",     "fails with text", "file",     "folders",    "row gone",  "row error",
    "row count", "addresses",       "ticks",    "memory",     "host name", "nvme open",
    "nvme call", "nvme status",     "bmc code", "bmc silent", "bmc late",  "bmc short",
    "bmc long",  "bmc gone"};

void note(const std::string& line) {
    if (stage.tracing)
        stage.trace.push_back(line);
}

const Fault* faultOf(Trouble what, int number) {
    for (const Fault& fault : stage.faults)
        if (fault.what == what && (number == -1 || fault.number == number))
            return &fault;
    return nullptr;
}

void clearSight() {
    stage.asked.clear();
    stage.events.clear();
    stage.seconds = stage.requests = 0;
    stage.away = false;
    stage.session.strict = true;
}

void lookForRestart() {
    stage.away = false;
    looks_left = 1;
    bmc_restart_monitor_handler(nullptr);
    stage.away = false;
}

std::string subjectOf(const std::string& command) {
    const std::vector<std::string> words = bmcsim::words(command);
    if (words[0] == "storcli" && words.size() > 2)
        return "storcli " + words[1].substr(0, words[1].find('/', 1));
    if (words[0] == "sas3ircu" && words.size() > 2)
        return "sas3ircu " + words[1];
    const std::string last = words.back().substr(words.back().rfind('/') + 1);
    if (words[0] == "newfs") // a partition is left alone with its disk
        return last.substr(0, last.find_last_of("ps"));
    const bool device = words[0] == "smartctl" || words[0] == "fdisk" ||
                        (words[0] == "camcontrol" && words.size() > 2);
    return device ? last : words[0];
}

namespace {

constexpr int HUNG_SECONDS = 20;

bool isProgramTrouble(Trouble what) {
    return what <= Trouble::failed_with_text;
}

const Fault* troubleOf(const std::string& command) {
    for (const Fault& fault : stage.faults)
        if (isProgramTrouble(fault.what) && (fault.target.empty() || fault.target == command ||
                                             fault.target == command.substr(0, command.find(' '))))
            return &fault;
    return nullptr;
}

// What the program does under a fault instead of printing `told`.
program_answer troubled(const Fault& fault, const Printed& told, const std::string& command,
                        const program_limits& limits) {
    const std::string half = told.text.substr(0, told.text.size() / 2);
    switch (fault.what) {
    case Trouble::missing:
        return {program_end::missing, 0, ""};
    case Trouble::not_started:
        return {program_end::not_started, 0, ""};
    case Trouble::hung:
        if (limits.time >= std::chrono::seconds(HUNG_SECONDS))
            stage.hung[subjectOf(command)] = stage.pass;
        stage.seconds += static_cast<int>(limits.time.count() / 1000);
        return {program_end::timed_out, 0, half};
    case Trouble::cut:
        return {program_end::cut, 0, half};
    case Trouble::garbage:
        return {program_end::exited, 0, "Segmentation fault (core dumped)\n\t: = ; 7 (\n"};
    case Trouble::nothing:
        return {program_end::exited, 0, ""};
    case Trouble::failed:
        return {program_end::exited, 1, half};
    default:
        return {program_end::exited, 1, told.text};
    }
}

std::string joined(const command_line& words) {
    std::string line;
    for (const std::string& word : words)
        line += (line.empty() ? "" : " ") + word;
    return line;
}

program_answer run(const command_line& words, const program_limits& limits) {
    const std::string command = joined(words);
    if (stage.asked.count(command) != 0)
        stage.flaws.push_back("asked twice in a pass: " + command);
    const auto left = stage.hung.find(subjectOf(command));
    if (left != stage.hung.end() && stage.pass < left->second + LEFT_ALONE)
        stage.flaws.push_back("asked although it hung: " + command);
    const std::optional<Printed> told = answer(stage.world, command);
    const Fault* fault = told ? troubleOf(command) : nullptr;
    Asked& asked = stage.asked[command];
    program_answer given;
    if (fault != nullptr)
        given = troubled(*fault, *told, command, limits);
    else if (told)
        given = {program_end::exited, told->status, told->text};
    asked = {fault == nullptr, given.exit_status, !told,
             fault != nullptr && fault->what == Trouble::garbage};
    if (given.end == program_end::exited && given.exit_status == 0)
        stage.succeeded.insert(command);
    note(
        "  asked: " + command +
        (fault == nullptr ? "" : std::string(", ") + TROUBLE_NAMES[static_cast<int>(fault->what)]));
    if (told && told->status == 64)
        stage.flaws.push_back("a command line that nothing is known of: " + command);
    return given;
}

std::optional<std::string> readFile(const char* path) {
    for (const Fault& fault : stage.faults)
        if (fault.what == Trouble::file && (fault.target.empty() || fault.target == path))
            return std::nullopt;
    if (std::string_view(path) == hdd_file)
        return stage.drive_map.empty() ? std::nullopt : std::optional(stage.drive_map);
    if (std::string_view(path) == "/etc/resolv.conf") {
        std::string text = "search example.org\n";
        for (const std::string& server : stage.world.name_servers)
            text += "nameserver " + server + "\n";
        return text;
    }
    return "Customize : {\n  raidCards = \"northwind raid\";\n};\n"; // the configuration
}

std::vector<std::string> listFolder(const char* path) {
    if (faultOf(Trouble::folders) != nullptr || std::string_view(path) != "/dev")
        return {};
    return devNames(stage.world);
}

std::chrono::steady_clock::time_point now() {
    return std::chrono::steady_clock::time_point(std::chrono::hours(1) +
                                                 std::chrono::seconds(stage.seconds));
}

} // namespace

void setStage() {
    tools = {run, readFile, listFolder, now};
}

} // namespace sim
