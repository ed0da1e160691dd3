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
#include <new>
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

constexpr int STEPS_MOST = 900; // of a pass; the numbers behind belong to what is no step

struct History {
    const Script& script;
    int changes = 0, faults = 0; // percent of the passes before which there are any
    Memory memory = {};
    Outcome outcome = {};
    std::size_t own_blocks = live_blocks; // what the agent and its world do not hold

    Dice dice(int number) const {
        return {script.seed, stage.pass, number};
    }
};

void settleIn(std::uint64_t seed) {
    World& world = stage.world = makeWorld(seed);
    std::vector<bmcsim::MappedDrive> drives;
    for (const auto& [serial, slot] : world.drive_map)
        drives.push_back({serial, static_cast<std::uint16_t>(slot)});
    stage.bmc.files.offered[bmcsim::FILE_CAPABILITY] = {
        bmcsim::capabilityFile(world.nvme_enabled, 32)};
    stage.bmc.files.offered[bmcsim::FILE_DRIVE_MAP] = {bmcsim::driveMapFile(drives)};
    stage.bmc.sel.clockBase = 0x5F010203 + static_cast<std::uint32_t>(seed);
    stage.session = bmcsim::newSession(stage.bmc);
    nicStatusSel = world.link_events;
    intelRSTeVROC = world.rste_enabled;
    raidCard3rdParty = world.cards_enabled;
}

std::string agentInformation() {
    bmcsim::Bytes clock;
    bmcsim::appendLittleEndian(clock, selTime(stage.bmc.sel, stage.bmc.ledger), 4);
    const std::string started(clock.begin(), clock.end());
    return "1.7.0;220503;0x01;1;" + started.substr(0, started.find('\0')) + ";";
}

// As the start of the service and the monitor's do.
void startAgent(History& history) {
    setStage();
    clearSight();
    history.memory.agent = agentInformation();
    setStartTime();
    mStatus = STATUS_RUNNING;
    getVYNInfo();
    beginMonitoring();
}

// One thing that happens; nothing when it does not apply.
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
    if (stage.pass == 1 &&
        (made.what == "file" || made.what == "missing" || made.what == "fails with text"))
        return "";
    made.until = stage.pass + (dice.percent(50) ? 0 : dice.percent(90) ? dice.below(5) : 15);
    stage.faults.push_back(made);
    return say("{} {} {} until pass {}", made.what, made.target.empty() ? "(all)" : made.target,
               made.number, made.until);
}

void letHappen(History& history) {
    Dice chance = history.dice(0);
    const int changes = chance.percent(history.changes) ? chance.between(1, 4) : 0;
    const int faults = chance.percent(history.faults) ? chance.between(1, 3) : 0;
    for (int number = 1; number <= changes + faults; number++) {
        const Step step{stage.pass, number};
        Dice dice = history.dice(number);
        if (history.script.left_out.count(step) != 0)
            continue;
        const std::string what = happen(history, dice, number > changes);
        if (what.empty())
            continue;
        note("  " + what);
        const std::size_t before = live_blocks;
        history.outcome.steps.emplace_back(step, what);
        history.own_blocks += live_blocks - before;
    }
}

// What the other threads do between two passes.
void waitForPass(History& history) {
    Dice dice = history.dice(STEPS_MOST);
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

std::string runPass(History& history) {
    note(format("pass %d", stage.pass));
    auto& faults = stage.faults;
    faults.erase(std::remove_if(faults.begin(), faults.end(),
                                [](const Fault& fault) { return fault.until < stage.pass; }),
                 faults.end());
    letHappen(history);
    waitForPass(history);
    clearSight();
    stage.bmc.sel.records.clear();
    history.memory.clock = selTime(stage.bmc.sel, stage.bmc.ledger);
    takeSample(history.memory.samples, stage.world);
    monitorPass();
    static_first_init = 0;
    return judgePass(history.memory);
}

// What is kept must not grow with the passes: a block lost in each of 10,000 shows. What a server
// gets in time - disks, drives, interfaces - needs less.
void judgeMemory(History& history) {
    constexpr int SETTLED = 1000;
    constexpr std::size_t MORE = 5000;
    const std::size_t kept = live_blocks - history.own_blocks;
    if (stage.pass == SETTLED)
        history.outcome.settled = kept;
    history.outcome.kept = kept;
    if (stage.pass > SETTLED && kept > history.outcome.settled + MORE)
        history.outcome.flaw = format("memory grows: %zu blocks", kept);
}

} // namespace

Outcome play(const Script& script) {
    History history{script};
    Dice dice = history.dice(STEPS_MOST);
    history.changes = dice.of({10, 40, 80});
    history.faults = dice.of({0, 10, 40});
    settleIn(script.seed);
    startAgent(history);
    for (stage.pass = 1; stage.pass <= script.passes && history.outcome.flaw.empty();
         stage.pass++) {
        history.outcome.flaw = runPass(history);
        history.outcome.passes = stage.pass;
        judgeMemory(history);
    }
    return history.outcome;
}

} // namespace sim
