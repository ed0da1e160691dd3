// What is to be told of a world: composed from the truth, without a line of the agent.
#pragma once

#include "stage.h"

namespace sim {

enum Family { ONBOARD, IT, RAID, FAMILIES, NO_DRIVE = FAMILIES };

// One storage record. That of a drive also says who has to answer for it.
struct Item {
    std::string text;
    Family family = NO_DRIVE;
    std::string key = {}, state = {};
    int index = -1; // onboard: where it sits, -1: nobody knows
    int controller = 0, enclosure = 0, slot = 0;
    std::vector<std::string> listed_by = {}; // command lines
    std::string state_by = {};               // empty: its list tells the state
    bool mapped = false;                     // onboard: where it sits is told by the drive map
};

constexpr std::size_t LINES_MOST = 256; // of a pass; one more for the RAID cards
// `all`: also those for which a pass has no room left.
// Every empty field between two separators as N/A; fields in one text.
std::string filled(const std::string& text, const char* separators);
std::string join(const std::vector<std::string>& fields, const char* separator);

std::vector<Item> storageItems(const World& world, bool all = false);
std::vector<Item> rsteItems(const World& world);
// The interfaces in the order of their records, at most `most`.
std::vector<const Nic*> reportedNics(const World& world, std::size_t most);
constexpr std::size_t LAN_MOST = 31, USAGE_MOST = 32;
std::vector<const Nic*> nicsByMac(const World& world,
                                  std::size_t most); // in their order of LAN records
std::string lanRecord(const World& world, const Nic& nic);
std::vector<std::string> nvmeRecords(const World& world);

// ---- Samples between two passes

struct Samples {
    std::vector<int> memory; // percent
    std::map<std::string, std::vector<std::uint64_t>> bytes;
};
void takeSample(Samples& samples, const World& world);
std::string usageRecord(const Nic& nic, const Samples& samples);

// What the oracle remembers of a history. judgePass says what is wrong with the pass on the stage,
// in one line; nothing when all is as it has to be.
struct Subject {
    std::string told, raised; // states: told whole; asserted while the old one is not cleared yet
    enum { present, missing, untold, unsure } presence = present; // unsure: present or untold
    Item item;
    bool placed = true; // onboard: the agent can know where it sits
};
struct Memory {
    bool first_pass = true;
    std::map<std::string, bool> links; // by name: told up
    struct Drives {
        std::map<std::string, Subject> known;
        std::vector<std::string> order; // of appearance
        enum { no, maybe, yes } listed = no;
    } drives[FAMILIES];
    bool rste = false, mode_known = false, static_due = true;
    bool crowded = false;     // there were more items than a pass tells: which are known is open
    bool static_over = false; // nothing of them is left to tell
    bool named = false;       // by a uname that told the truth
    std::array<std::int64_t, 5> ticks = {};
    Samples samples;
    std::string agent;       // the agent's information
    std::uint32_t clock = 0; // of the BMC, when the pass began
};
std::string judgePass(Memory& memory);
std::string judgeEvents(Memory& memory);
std::string judgeValues(const Memory& memory);
// Whether the pass told the static values, and with what result.
void judgeStatic(Memory& memory);
// Whether a command line was answered as the world has it, with success.
bool answered(const std::string& command, bool any_status = false);

} // namespace sim
