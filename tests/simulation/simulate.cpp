// simulate: plays invented histories of a server below the agent and tells the first flaw of each.
#include "oracle.h"

#include "bmc/start_time.h"
#include "bmc/time_stamp.h"
#include "config/configuration.h"
#include "host/cpu_memory.h"
#include "host/network_usage.h"
#include "service/schedule.h"
#include "system_info.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace {
std::size_t live_blocks = 0; // of memory, the agent's included
} // namespace

[[gnu::noinline]] void* operator new(std::size_t size) { // inlined it would seem a mismatch
    void* block = std::malloc(std::max<std::size_t>(size, 1));
    if (block == nullptr)
        std::abort();
    ++live_blocks;
    return block;
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return operator new(size);
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
    live_blocks -= block == nullptr ? 0 : 1;
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}

namespace sim {

namespace {

// Something that happens before a pass: a change of the world, or a fault that begins.
using Step = std::pair<int, int>; // pass and number

struct Script {
    std::uint64_t seed = 1;
    int passes = 50;
    bool tracing = false;
    std::set<Step> left_out = {};
};

struct Outcome {
    int passes = 0;                    // that were played
    std::string flaw;                  // of the last one
    std::size_t settled = 0, kept = 0; // blocks of memory, at pass 1000 and at the end
    std::vector<std::pair<Step, std::string>> steps = {};
};

// ---- The child's side: plays one history in an agent as it is after its start

constexpr int NO_STEP = 900; // the numbers from here on belong to what is no step of a pass

struct History {
    const Script& script;
    std::FILE* told; // the steps, then the outcome, a line each
    Memory memory = {};
    Outcome outcome = {};

    Dice dice(int number) const {
        return {script.seed, stage.pass, number};
    }
};

void start(History& history) {
    World& world = stage.world = makeWorld(history.script.seed);
    std::vector<bmcsim::MappedDrive> drives;
    for (const auto& [serial, slot] : world.drive_map)
        drives.push_back({serial, static_cast<std::uint16_t>(slot)});
    stage.bmc.files.offered[bmcsim::FILE_CAPABILITY] = {
        bmcsim::capabilityFile(world.nvme_enabled, 32)};
    stage.bmc.files.offered[bmcsim::FILE_DRIVE_MAP] = {bmcsim::driveMapFile(drives)};
    stage.bmc.sel.clockBase = 0x5F010203 + static_cast<std::uint32_t>(history.script.seed);
    stage.session = bmcsim::newSession(stage.bmc);
    nicStatusSel = world.link_events;
    intelRSTeVROC = world.rste_enabled;
    raidCard3rdParty = world.cards_enabled;
    bmcsim::Bytes clock;
    bmcsim::appendLittleEndian(clock, selTime(stage.bmc.sel, stage.bmc.ledger), 4);
    clock.push_back(0);
    history.memory.agent = say("1.7.0;220503;0x01;1;{};", reinterpret_cast<char*>(clock.data()));
    setStage();
    clearSight();
    setStartTime();
    mStatus = STATUS_RUNNING;
    getVYNInfo();
    beginMonitoring();
}

std::string happen(History& history, Dice& dice, bool fault) {
    if (!fault && dice.percent(2)) {
        restartBmc(stage.bmc);
        history.memory.static_due = true;
        return "the BMC restarts";
    }
    if (!fault)
        return changeWorld(stage.world, dice);
    Fault made = makeFault(stage.world, dice);
    // What was never there, or never went well, is no fault.
    if (stage.pass == 1 && (made.what == "file" || made.what == "missing" ||
                            made.what == "fails with text" || made.what == "prints nothing"))
        return "";
    made.until = stage.pass + (dice.percent(50) ? 0 : dice.percent(90) ? dice.below(5) : 15);
    stage.faults.push_back(made);
    return say("{} {} {} until pass {}", made.what, made.target.empty() ? "(all)" : made.target,
               made.number, made.until);
}

void letHappen(History& history, int change_percent, int fault_percent) {
    auto& faults = stage.faults;
    faults.erase(std::remove_if(faults.begin(), faults.end(),
                                [](const Fault& fault) { return fault.until < stage.pass; }),
                 faults.end());
    Dice chance = history.dice(0);
    const int changes = chance.percent(change_percent) ? chance.between(1, 4) : 0;
    const int steps = changes + (chance.percent(fault_percent) ? chance.between(1, 3) : 0);
    for (int number = 1; number <= steps; number++) {
        Dice dice = history.dice(number);
        if (history.script.left_out.count({stage.pass, number}) != 0)
            continue;
        const std::string what = happen(history, dice, number > changes);
        if (what.empty())
            continue;
        note("  " + what);
        std::fprintf(history.told, "%d %d %s\n", stage.pass, number, what.c_str());
    }
}

// What the other threads do between two passes.
void waitForPass(History& history) {
    Dice dice = history.dice(NO_STEP);
    const std::vector<Fault> faults = std::exchange(stage.faults, {});
    stage.bmc.ledger.nowMs += 10000;
    lookForRestart();
    for (int i = dice.below(4); i > 0; i--) {
        liveOn(stage.world, dice);
        getMemoryUsage(0);
        getNetworkUsage(0);
        takeSample(history.memory.samples, stage.world);
    }
    liveOn(stage.world, dice);
    stage.faults = faults;
}

std::string runPass(Memory& memory) {
    clearSight();
    stage.bmc.sel.records.clear();
    memory.clock = selTime(stage.bmc.sel, stage.bmc.ledger);
    takeSample(memory.samples, stage.world);
    monitorPass();
    static_first_init = 0;
    return judgePass(memory);
}

// What is kept must not grow with the passes: a block lost in each of 10,000 shows. What a server
// gets in time - disks, drives, interfaces - needs less.
void judgeMemory(Outcome& outcome) {
    constexpr int SETTLED = 1000;
    constexpr std::size_t MORE = 5000;
    outcome.kept = live_blocks;
    if (stage.pass == SETTLED)
        outcome.settled = live_blocks;
    if (stage.pass > SETTLED && live_blocks > outcome.settled + MORE)
        outcome.flaw = say("memory grows: {} blocks", live_blocks);
}

[[noreturn]] void play(const Script& script, int out, bool quiet) {
    if (script.tracing)
        stage.trace = fdopen(dup(STDOUT_FILENO), "w");
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(null, STDOUT_FILENO);
    if (quiet)
        dup2(null, STDERR_FILENO);
    History history{script, fdopen(out, "w")};
    Outcome& outcome = history.outcome;
    Dice dice = history.dice(NO_STEP);
    const int changes = dice.of({10, 40, 80}), faults = dice.of({0, 10, 40}); // percent
    start(history);
    for (stage.pass = 1; stage.pass <= script.passes && outcome.flaw.empty(); stage.pass++) {
        note(say("pass {}", stage.pass));
        letHappen(history, changes, faults);
        waitForPass(history);
        outcome.flaw = runPass(history.memory);
        outcome.passes = stage.pass;
        judgeMemory(outcome);
    }
    std::fprintf(history.told, "0 0 %d %zu %zu %s\n", outcome.passes, outcome.settled, outcome.kept,
                 outcome.flaw.c_str());
    std::fflush(nullptr);
    std::exit(0);
}

std::string readAll(int in) {
    std::string text;
    char buffer[65536];
    for (ssize_t size = 0; (size = read(in, buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<std::size_t>(size));
    close(in);
    return text;
}

Outcome attempt(const Script& script, bool quiet = true) {
    int ends[2];
    std::fflush(nullptr);
    const pid_t child = pipe(ends) == 0 ? fork() : -1;
    if (child == -1) {
        std::perror("simulate");
        std::exit(2);
    }
    if (child == 0)
        play(script, ends[1], quiet);
    close(ends[1]);
    std::istringstream lines(readAll(ends[0]));
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0 && quiet)
        return attempt(script, false); // once more, to see what it says
    Outcome outcome;
    for (Step step; lines >> step.first >> step.second && step.first != 0;) {
        outcome.steps.emplace_back(step, "");
        std::getline(lines, outcome.steps.back().second);
    }
    lines >> outcome.passes >> outcome.settled >> outcome.kept;
    std::getline(lines.ignore(), outcome.flaw);
    if (status != 0)
        outcome.flaw = format("the agent ended with status %04X", status);
    return outcome;
}

// Leaves out what does not matter for a failure: halves first, then smaller parts.
Outcome shrink(Script script, Outcome failed) {
    script.passes = failed.passes;
    for (std::size_t part = (failed.steps.size() + 1) / 2; part > 0;
         part = part == 1 ? 0 : (part + 1) / 2)
        for (std::size_t at = 0; at < failed.steps.size();) {
            Script less = script;
            for (std::size_t i = at; i < std::min(at + part, failed.steps.size()); i++)
                less.left_out.insert(failed.steps[i].first);
            Outcome tried = attempt(less);
            if (tried.flaw.empty()) {
                at += part;
                continue;
            }
            script = less;
            script.passes = tried.passes;
            failed = tried;
        }
    return failed;
}

void tellFailure(Script script, const Outcome& failed) {
    std::printf("seed %ju, pass %d: %s\n", script.seed, failed.passes, failed.flaw.c_str());
    script.tracing = false;
    const Outcome least = shrink(script, failed);
    std::printf("  shrunk to pass %d: %s\n", least.passes, least.flaw.c_str());
    for (const auto& [step, what] : least.steps)
        std::printf("  before pass %d:%s\n", step.first, what.c_str());
}

bool readOptions(int count, char** words, Script& script, std::uintmax_t& last) {
    for (int i = 1; i < count; i++) {
        const std::string word = words[i];
        if (word == "--trace") {
            script.tracing = true;
            continue;
        }
        std::uintmax_t from = 0, to = 0;
        const int read = ++i < count ? std::sscanf(words[i], "%ju..%ju", &from, &to) : 0;
        if (word == "--passes") {
            script.passes = static_cast<int>(from);
        } else if (word == "--seed" || word == "--seeds") {
            script.seed = from;
            last = read == 2 ? to : from;
        }
        if (read < 1)
            return false;
    }
    return last > 0;
}

} // namespace
} // namespace sim

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    sim::Script script;
    std::uintmax_t last = 0;
    if (!sim::readOptions(argc, argv, script, last)) {
        std::fputs("usage: simulate (--seed N | --seeds N..M) [--passes N] [--trace]\n", stderr);
        return 2;
    }
    int histories = 0, passes = 0, failures = 0;
    for (; script.seed <= last; script.seed++) {
        const sim::Outcome outcome = sim::attempt(script);
        histories++;
        passes += outcome.passes;
        if (outcome.settled != 0)
            std::printf("seed %ju: %zu blocks of memory at pass 1000, %zu at pass %d\n",
                        script.seed, outcome.settled, outcome.kept, outcome.passes);
        if (!outcome.flaw.empty()) {
            failures++;
            sim::tellFailure(script, outcome);
        }
    }
    std::printf("%d histories, %d passes: %d failed\n", histories, passes, failures);
    return failures == 0 ? 0 : 1;
}
