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
    std::string serial = {};                 // onboard
};

constexpr std::size_t LINES_MOST = 256; // of a pass; one more for the RAID cards
// `all`: also those for which a pass has no room left.
std::vector<Item> storageItems(const World& world, bool all = false);
std::vector<Item> rsteItems(const World& world);
std::vector<std::string> nvmeRecords(const World& world);

// Every empty field between two separators as N/A.
std::string filled(std::string text, std::string_view separators);
std::string join(const std::vector<std::string>& fields, const char* separator);

constexpr std::size_t LAN_MOST = 31, USAGE_MOST = 32;
// The interfaces in the order of their usage records, and of their LAN records, at most `most`.
std::vector<const Nic*> reportedNics(const World& world, std::size_t most);
std::vector<const Nic*> nicsByMac(const World& world, std::size_t most);

struct Samples {
    std::int64_t memory = 0, count = 0; // sum of the percents
    std::map<std::string, std::vector<std::uint64_t>> bytes;
};
void takeSample(Samples& samples, const World& world);

struct Subject {
    std::string told, raised; // states: told whole; asserted while the old one is not cleared yet
    enum { present, missing, untold, unsure } presence = present; // unsure: present or untold
    Item item;
    bool placed = true;      // onboard: the agent can know where it sits
    std::string serial = {}; // onboard: of the disk, and of all that had its name
    std::set<std::string> serials = {};
    bool moved = false; // one of them: nobody knows whether its absence was tried
};
struct Drives {
    std::map<std::string, Subject> known;
    std::vector<std::string> order; // of appearance
    enum { no, maybe, yes } listed = no;
};
struct Memory {
    bool first_pass = true;
    std::map<std::string, bool> links; // by name: told up
    std::array<Drives, FAMILIES> drives;
    bool rste = false, mode_known = false, static_due = true;
    bool crowded = false;     // there were more items than a pass tells: which are known is open
    bool static_over = false; // nothing of them is left to tell
    bool named = false;       // by a uname that told the truth
    std::array<std::int64_t, 5> ticks = {};
    Samples samples;
    std::string agent;       // the agent's information
    std::uint32_t clock = 0; // of the BMC, when the pass began
};
// What is wrong with the pass on the stage, in one line; nothing when all is as it has to be.
std::string judgePass(Memory& memory);
std::string judgeEvents(Memory& memory);

} // namespace sim
