#include "stage.h"

#include "bmc/restart_monitor.h"
#include "config/logs.h"
#include "state/flags.h"
#include "tools/program.h"

#include <algorithm>

using sim::stage;

// ---- Logs and flags. Those of the agent are files and shared memory of fixed names.

const char* const log_file = "log";
const char* const hdd_file = "hdd";
const char* const time_file = "time";

bool writeFile(const char* /*name*/, const char* /*mode*/, std::string_view /*text*/) {
    return true;
}
void printLog(std::string_view /*title*/, std::string_view /*value*/) {}
void printHexLog(std::string_view /*title*/, unsigned /*value*/) {}
void printIntLog(std::string_view /*title*/, int /*value*/) {}
void printErrLog(std::string_view /*title*/, std::string_view /*value*/) {}
void printErrIntLog(std::string_view /*title*/, int /*value*/) {}
void printCommandLog(std::string_view /*title*/, std::string_view /*value*/) {}
void printHddMappingLog(std::string_view title, std::string_view value, int first) {
    stage.drive_map = (first == 1 ? "" : stage.drive_map) + sim::say("{},{}\n", title, value);
}
void restartLog() {}

int getStopFlag() {
    return stage.looks_left-- > 0 ? 0 : 1;
}
int getPauseFlag() {
    return 0;
}
int getCurPauseFlag() {
    return 0;
}
int setStopFlag(int /*value*/) {
    return 0;
}
int setPauseFlag(int /*value*/) {
    return 0;
}
int setCurPauseFlag(int /*value*/) {
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

void note(const std::string& line) {
    if (stage.trace != nullptr)
        std::fprintf(stage.trace, "%s\n", line.c_str());
}

const Fault* faultOf(const char* what, int number) {
    for (const Fault& fault : stage.faults)
        if (fault.what == what && (number == -1 || fault.number == number))
            return &fault;
    return nullptr;
}

bool readable(const std::string& path) {
    return std::none_of(stage.faults.begin(), stage.faults.end(), [&](const Fault& fault) {
        return fault.what == "file" && (fault.target.empty() || fault.target == path);
    });
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
    stage.looks_left = 1;
    bmc_restart_monitor_handler(nullptr);
    stage.away = false;
}

namespace {

// Who is left alone when a command line hangs.
std::string subjectOf(const std::string& command) {
    const std::vector<std::string> words = bmcsim::words(command);
    if ((words[0] == "storcli" || words[0] == "sas3ircu") && words.size() > 2)
        return words[0] + " " + words[1].substr(0, words[1].find('/', 1));
    const std::string last = words.back().substr(words.back().rfind('/') + 1);
    if (words[0] == "newfs") // a partition is left alone with its disk
        return last.substr(0, last.find_last_of("ps"));
    const bool device = words[0] == "smartctl" || words[0] == "fdisk" ||
                        (words[0] == "camcontrol" && words.size() > 2);
    return device ? last : words[0];
}

const Fault* troubleOf(const std::string& command) {
    for (const Fault& fault : stage.faults)
        if (fault.side == Fault::program && (fault.target.empty() || fault.target == command ||
                                             fault.target == command.substr(0, command.find(' '))))
            return &fault;
    return nullptr;
}

program_answer troubled(const std::string& what, const std::string& told,
                        const std::string& command, const program_limits& limits) {
    const std::string half = told.substr(0, told.size() / 2);
    if (what == "hung") {
        if (limits.time >= PROGRAM_SECONDS)
            stage.hung[subjectOf(command)] = stage.pass;
        stage.seconds += static_cast<int>(limits.time.count() / 1000);
    }
    const std::map<std::string, program_answer> answers = {
        {"missing", {program_end::missing, 0, ""}},
        {"not started", {program_end::not_started, 0, ""}},
        {"hung", {program_end::timed_out, 0, half}},
        {"cut", {program_end::cut, 0, half}},
        {"garbage", {program_end::exited, 0, "Segmentation fault (core dumped)\n\t: = ; 7 (\n"}},
        {"prints nothing", {program_end::exited, 0, ""}},
        {"fails", {program_end::exited, 1, half}},
        {"fails with text", {program_end::exited, 1, told}}};
    return answers.at(what);
}

program_answer run(const command_line& words, const program_limits& limits) {
    std::string command = words.front();
    for (std::size_t i = 1; i < words.size(); i++)
        command += " " + words[i];
    if (stage.asked.count(command) != 0)
        stage.flaws.push_back("asked twice in a pass: " + command);
    const auto left = stage.hung.find(subjectOf(command));
    if (left != stage.hung.end() && stage.pass < left->second + LEFT_ALONE)
        stage.flaws.push_back("asked although it hung: " + command);
    const std::optional<Printed> told = answer(stage.world, command);
    if (told && told->status == 64)
        stage.flaws.push_back("a command line that nothing is known of: " + command);
    const Fault* fault = told ? troubleOf(command) : nullptr;
    const std::string what = fault == nullptr ? "" : fault->what;
    program_answer given;
    if (fault != nullptr)
        given = troubled(what, told->text, command, limits);
    else if (told)
        given = {program_end::exited, told->status, told->text};
    stage.asked[command] = {fault == nullptr, given.exit_status, what == "garbage",
                            fault == nullptr || what == "fails with text"};
    if (given.end == program_end::exited && given.exit_status == 0)
        stage.succeeded.insert(command);
    note(say("  asked: {}{}{}", command, what.empty() ? "" : ", ", what));
    return given;
}

std::optional<std::string> readFile(const char* path) {
    if (!readable(path))
        return std::nullopt;
    if (std::string_view(path) == hdd_file)
        return stage.drive_map.empty() ? std::nullopt : std::optional(stage.drive_map);
    if (std::string_view(path) != "/etc/resolv.conf") // the configuration
        return "Customize : {\n  raidCards = \"northwind raid\";\n};\n";
    std::string text = "search example.org\n";
    for (const std::string& server : stage.world.name_servers)
        text += "nameserver " + server + "\n";
    return text;
}

std::vector<std::string> listFolder(const char* path) {
    const bool listed = faultOf("folders") == nullptr && std::string_view(path) == "/dev";
    return listed ? devNames(stage.world) : std::vector<std::string>();
}

std::chrono::steady_clock::time_point now() {
    return std::chrono::steady_clock::time_point(std::chrono::seconds(3600 + stage.seconds));
}

std::string anyCommand(const World& world, Dice& dice) {
    if (!world.controllers.empty() && dice.percent(40)) {
        const Controller& one = dice.of(world.controllers);
        return say(one.isSas() ? "sas3ircu {} display"
                               : dice.of({"storcli /c{} show", "storcli /c{}/vall show all",
                                          "storcli /c{}/eall/sall show all",
                                          "storcli /c{} /eall /sall show"}),
                   one.number);
    }
    if (!world.disks.empty() && dice.percent(50))
        return say(dice.of({"smartctl -i -H -A /dev/{}", "camcontrol identify {}", "fdisk {}"}),
                   dice.of(world.disks).name);
    auto any = bmcsim::splitText(
        "ifconfig,netstat,pciconf,geom,camcontrol,smartctl,fdisk,gpart,df,swapinfo,newfs,lspci,"
        "graid,storcli,sas3ircu,uname,netstat -rn -6,sas3ircu list,storcli show,uname -r -p,"
        "camcontrol devlist",
        ",");
    return dice.of(any);
}

Fault requestFault(Dice& dice) {
    using bmcsim::FaultKind;
    Fault fault;
    fault.side = Fault::request;
    fault.first = dice.percent(40) ? 0 : dice.below(80);
    fault.count = dice.percent(60) ? 1 : dice.between(2, 60);
    bmcsim::Fault& order = fault.order;
    order.kind = dice.of({FaultKind::CODE, FaultKind::SILENT, FaultKind::LATE, FaultKind::SHORT,
                          FaultKind::LONG, FaultKind::DROP});
    order.target = dice.of<bmcsim::Target>({{}, {4, 2}, {4, 2}, {6, 0x58}, {0x0A, 0x48}});
    if (order.kind == FaultKind::CODE)
        order.answer = {dice.of<std::uint8_t>({0xC0, 0xC1, 0xC3, 0xC7, 0xCB, 0xD5, 0xFF, 0x80})};
    order.argument = static_cast<std::uint32_t>(
        order.kind == FaultKind::SHORT ? dice.below(4) : dice.between(20, 200));
    fault.what = say("{}, {} requests from {} on", faultText(order), fault.count, fault.first);
    return fault;
}

} // namespace

Fault makeFault(const World& world, Dice& dice) {
    Fault fault;
    const int kind = dice.below(100);
    if (kind >= 80)
        return requestFault(dice);
    if (kind < 60) {
        fault.what = dice.of({"missing", "not started", "hung", "cut", "garbage", "prints nothing",
                              "fails", "fails with text"});
        fault.target = dice.percent(6) ? "" : anyCommand(world, dice);
        if (fault.what == "missing")
            fault.target.erase(std::min(fault.target.find(' '), fault.target.size()));
        return fault;
    }
    fault.side = Fault::kernel;
    fault.what =
        dice.of({"file", "row gone", "row error", "row count", "addresses", "ticks", "memory",
                 "host name", "nvme open", "nvme call", "nvme status", "folders"});
    if (fault.what == "file")
        fault.target = dice.of({"", "/etc/resolv.conf", "/opt/norvik/vyn.ini"});
    fault.number = fault.what[0] == 'n' ? dice.below(12) : dice.of(world.nics).row;
    return fault;
}

void setStage() {
    tools = {run, readFile, listFolder, now};
}

} // namespace sim
