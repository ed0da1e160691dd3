// One history: a server, what happens to it and what goes wrong, pass by pass.
#pragma once

#include "stage.h"

#include <set>

namespace sim {

// Something that happens before a pass: a change of the world, or a fault that begins.
struct Step {
    int pass = 0, number = 0;

    bool operator<(const Step& other) const {
        return pass != other.pass ? pass < other.pass : number < other.number;
    }
};

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

// Plays a history in this process, whose agent must be as a process has it at its start: once.
Outcome play(const Script& script);

// The fault that begins here, not yet with its end.
Fault makeFault(const World& world, Dice& dice);
std::string faultText(const Fault& fault);

} // namespace sim
