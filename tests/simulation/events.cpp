// Which events are due after a pass. A subject whose questions were all answered as the world has
// it owes its events; one that could not be asked may tell what is true, and nothing else.
#include "oracle.h"

#include "config/configuration.h"
#include "config/logs.h"

#include <algorithm>
#include <utility>

namespace sim {

namespace {

constexpr std::uint8_t ASSERTED = 0x70, CLEARED = 0xF0;

std::string flaw;       // the first one of this pass
std::vector<bool> used; // attempts that were due
std::size_t next = 0;   // the first attempt behind the last that was due in order

void object(const std::string& text) {
    if (flaw.empty())
        flaw = text;
}

bool readable(const char* path) {
    return std::none_of(stage.faults.begin(), stage.faults.end(), [&](const Fault& fault) {
        return fault.what == Trouble::file && (fault.target.empty() || fault.target == path);
    });
}

// Optional events that were found: those of another drive may have the same bytes.
struct Lent {
    std::size_t at;
    Subject* subject;
    Subject before;
};
std::vector<Lent> lent;

enum class Told { taken, refused, absent };

// An event is due: whether it was sent, and taken. `in_order` false: anywhere in what is left.
Told tell(const bmcsim::Bytes& event, bool required, const std::string& who, bool in_order = true) {
    const std::size_t count = stage.events.size();
    std::size_t at = next;
    while (!in_order && at < count && (used[at] || stage.events[at].event != event))
        ++at;
    if (at < count && stage.events[at].event == event) {
        used[at] = true;
        while (next < count && used[next])
            ++next;
        return stage.events[at].taken ? Told::taken : Told::refused;
    }
    for (auto one = lent.begin(); required && one != lent.end(); ++one)
        if (stage.events[one->at].event == event) {
            *one->subject = one->before;
            at = one->at;
            lent.erase(one);
            return stage.events[at].taken ? Told::taken : Told::refused;
        }
    if (required && !stage.away)
        object("missed event: due was " + bmcsim::hexText(event) + " of " + who +
               (next < count ? ", told was " + bmcsim::hexText(stage.events[next].event) : ""));
    return Told::absent;
}

// ---- Links

bool rowReadable(const Nic& nic) {
    if (faultOf(Trouble::row_count) != nullptr || faultOf(Trouble::addresses) != nullptr ||
        faultOf(Trouble::row_gone, nic.row) != nullptr)
        return false;
    return std::none_of(stage.faults.begin(), stage.faults.end(), [&](const Fault& fault) {
        return fault.what == Trouble::row_error && fault.number >= nic.row;
    });
}

// `reported` false: only when others can't be read it may be.
void judgeLink(Memory& memory, const Nic& nic, bool reported) {
    const bool up = nic.up && nic.active();
    bool& told = memory.links[nic.name];
    if (up == told)
        return;
    const bool required = reported && rowReadable(nic) && answered("ifconfig -a");
    const bmcsim::Bytes event = {0x41,
                                 0x04,
                                 0xD0,
                                 0xFF,
                                 0x6F,
                                 static_cast<std::uint8_t>(up ? 0xA1 : 0xA2),
                                 static_cast<std::uint8_t>(nic.row),
                                 0xFF};
    if (!stage.world.link_events) {
        told = required ? up : told; // nothing is sent; it counts as told all the same
        return;
    }
    if (tell(event, required, nic.name) == Told::taken)
        told = up;
}

void judgeLinks(Memory& memory) {
    const std::vector<const Nic*> nics = reportedNics(stage.world, LAN_MOST);
    const std::size_t more = faultOf(Trouble::row_gone) == nullptr ? 0 : stage.faults.size();
    for (const Nic* nic : nicsByMac(stage.world, LAN_MOST + more))
        judgeLink(memory, *nic, std::find(nics.begin(), nics.end(), nic) != nics.end());
}

// ---- Drives

struct Rule {
    Family family;
    const char* state;
    std::uint8_t type;
};
constexpr Rule RULES[] = {
    {ONBOARD, "Fail", 0xA1},  {ONBOARD, "PredictiveFailureAnalysis", 0xA2},
    {IT, "Degraded", 0xA2},   {IT, "Failed", 0xA1},
    {IT, "HotSpare", 0xA3},   {IT, "OutofSync", 0xA5},
    {IT, "Rebuilding", 0xA7}, {RAID, "Degraded", 0xA2},
    {RAID, "UBad", 0xA1},     {RAID, "UBUnsp", 0xA1},
    {RAID, "DHS", 0xA3},      {RAID, "GHS", 0xA3},
    {RAID, "HSPShld", 0xA3},  {RAID, "OutofSync", 0xA5},
    {RAID, "Rbld", 0xA7},
};

std::uint8_t typeOf(Family family, const std::string& state) {
    for (const Rule& rule : RULES)
        if (rule.family == family && state == rule.state)
            return rule.type;
    return 0;
}

// What a change from `old` to `state` clears, 0: nothing. A failed onboard drive only clears by
// being well again.
std::uint8_t clearedBy(Family family, const std::string& old, const std::string& state) {
    const std::uint8_t type = typeOf(family, old);
    return family == ONBOARD && type == 0xA1 && state != "OK" ? 0 : type;
}

std::uint8_t byte(int value) {
    return static_cast<std::uint8_t>(value);
}

bmcsim::Bytes driveEvent(const Item& item, std::uint8_t alert, std::uint8_t type) {
    bmcsim::Bytes event = {0x41, 0x04, 0x0D, 0xFF, alert, type, byte(std::max(item.index, 0)),
                           0xFF};
    if (item.family == IT) {
        event[3] = 0x5F;
        event[6] = byte(item.slot);
        event[7] = byte(item.controller * 64 + (item.enclosure & 0x3F));
    } else if (item.family == RAID) {
        event[6] = byte(item.controller * 16 + (item.slot & 0x0F));
    }
    return event;
}

// The missing event of a RAID drive speaks with the sensor and the bytes of an IT drive. The index
// of an onboard one is that of its arrival; without one, that of the drive missing before.
bmcsim::Bytes missingEvent(Item item, std::uint8_t& previous) {
    if (item.family == RAID)
        item.family = IT;
    bmcsim::Bytes event = driveEvent(item, ASSERTED, 0xA0);
    if (item.family == ONBOARD && item.index < 0)
        event[6] = previous;
    previous = event[6];
    return event;
}

// What is still to be told of a state, as far as it was sent.
void judgeState(Subject& subject, const Item& item, bool required) {
    const auto send = [&](std::uint8_t alert, std::uint8_t type) {
        return type == 0 || tell(driveEvent(item, alert, type), required,
                                 item.key + " " + item.state) == Told::taken;
    };
    if (!subject.raised.empty()) {
        if (!send(CLEARED, clearedBy(item.family, subject.told, subject.raised)))
            return;
        subject.told = std::exchange(subject.raised, "");
    }
    const std::uint8_t asserted = typeOf(item.family, item.state);
    const std::uint8_t cleared = clearedBy(item.family, subject.told, item.state);
    if (item.state == subject.told || !send(ASSERTED, asserted))
        return;
    if (required || asserted != 0)
        subject.raised = item.state;
    if (!send(CLEARED, cleared))
        return;
    if (required || asserted != 0 || cleared != 0)
        subject.told = item.state;
    subject.raised.clear();
}

// Of a drive that the pass lists and may have seen (`visible`: must have).
void judgeDrive(Memory::Drives& drives, const Item& item, bool visible, bool first_pass) {
    const bool is_new = drives.known.count(item.key) == 0;
    // Without a drive before, or with none that was seen for certain: may be the first pass.
    const bool none_sure = item.family == ONBOARD &&
                           std::all_of(drives.known.begin(), drives.known.end(), [](auto& one) {
                               return one.second.presence == Subject::unsure;
                           });
    const bool first =
        first_pass || drives.listed == Memory::Drives::no || (none_sure && drives.known.empty());
    const bool placed =
        item.state_by.empty() || (answered(item.state_by, true) && readable(hdd_file) &&
                                  (item.mapped || answered("camcontrol devlist")));
    Subject subject = is_new ? Subject() : drives.known[item.key];
    if (is_new) {
        subject.item = item;
        subject.placed = placed;
        subject.presence = first                                                 ? Subject::present
                           : drives.listed == Memory::Drives::maybe || none_sure ? Subject::unsure
                                                                                 : Subject::untold;
    }
    const std::size_t before = next;
    if (subject.presence != Subject::present) {
        const bool unsure = subject.presence == Subject::unsure;
        const Told told = tell(driveEvent(item, CLEARED, 0xA0), visible && placed && !unsure,
                               item.key + " arrives");
        if (told == Told::taken ||
            (unsure && told == Told::absent && visible && placed && !stage.away)) {
            subject.presence = Subject::present;
            subject.item = item;
        } else if (unsure && told == Told::refused) {
            subject.presence = Subject::untold;
        }
    }
    if (subject.presence == Subject::present || subject.presence == Subject::unsure)
        judgeState(subject, item, subject.presence == Subject::present && visible && placed);
    if (subject.presence == Subject::unsure && next != before)
        subject.presence = Subject::present;
    if (is_new && !visible && next == before)
        subject.presence = Subject::unsure; // nobody knows whether it was seen
    const bool told_place = placed || next != before; // what was told named the place
    if (told_place && (!subject.placed || subject.item.index < 0))
        subject.item = item;
    subject.placed = subject.placed || told_place;
    Subject& known = drives.known[item.key];
    Subject old = std::exchange(known, subject);
    if (is_new) {
        drives.order.push_back(item.key);
        old = subject;
        old.presence = Subject::unsure;
        old.told = old.raised = "";
    }
    for (std::size_t at = before; at < next && !(visible && placed); at++)
        lent.push_back({at, &known, old});
}

void judgeMissing(Memory::Drives& drives, const std::map<std::string, bool>& there, bool whole) {
    std::uint8_t previous = 0;
    for (std::size_t i = 0; i < drives.order.size(); i++) {
        const std::string key = drives.order[i];
        Subject& subject = drives.known[key];
        if (there.count(key) != 0 || subject.presence == Subject::missing)
            continue;
        if (subject.presence == Subject::untold) {
            subject.presence = whole ? Subject::missing : Subject::untold;
            continue;
        }
        const bool unsure = subject.presence == Subject::unsure;
        const auto gone = [&](bool required, int index) {
            Item item = subject.item;
            item.index = index;
            std::uint8_t before = previous;
            const bmcsim::Bytes event = missingEvent(item, before);
            const Told told = tell(event, required, key + " is missing", false);
            previous = told == Told::absent ? previous : before;
            return told;
        };
        Told told = subject.placed ? Told::absent : gone(false, -1);
        if (told == Told::absent)
            told = gone(whole && !unsure, subject.item.index);
        if (told == Told::taken) {
            subject.presence = Subject::missing;
        } else if (unsure && whole && told == Told::absent && !stage.away) {
            drives.known.erase(key); // it was never seen
            drives.order.erase(drives.order.begin() + static_cast<std::ptrdiff_t>(i--));
        }
    }
}

// Whether the pass lists all of a family for certain.
bool listedWhole(Family family) {
    const World& world = stage.world;
    if (family == ONBOARD) {
        const bool all = std::all_of(world.disks.begin(), world.disks.end(), [](const Disk& disk) {
            const std::string kind = disk.name.substr(0, 2);
            return !disk.there || kind == "cd" || kind == "nd" ||
                   stage.asked["camcontrol identify " + disk.name].genuine;
        });
        const bool any = std::any_of(world.disks.begin(), world.disks.end(),
                                     [](const Disk& disk) { return disk.there; });
        return answered("geom disk list") && all && (any || faultOf(Trouble::folders) == nullptr);
    }
    const auto told = [&](bool installed, const char* list) {
        return answered(list) ||
               (stage.asked[list].genuine && (!installed || stage.succeeded.count(list) == 0));
    };
    bool whole = told(world.has_sas3ircu, "sas3ircu list");
    const bool cards = family == RAID && world.cards_enabled;
    whole = whole && (!cards || (told(world.has_storcli, "storcli show") && readable(ini_file)));
    for (const Controller& one : world.controllers)
        if (one.there && one.isSas() && world.has_sas3ircu)
            whole = whole && answered(format("sas3ircu %d display", one.number));
        else if (one.there && one.kind == Kind::card && world.has_storcli && cards)
            whole = whole && answered(format("storcli /c%d show", one.number));
    return whole;
}

// `told`: so many items a whole pass tells.
void judgeDrives(Memory& memory, const std::vector<Item>& items, std::size_t told, bool rste) {
    std::map<std::string, bool> there[FAMILIES];
    std::size_t line = 0;
    const auto visible = [](const Item& item) {
        return std::all_of(item.listed_by.begin(), item.listed_by.end(),
                           [](const std::string& list) { return answered(list); });
    };
    for (const Item& item : items) {
        ++line;
        if (item.family == NO_DRIVE || item.state == "Missing")
            continue;
        if (!there[item.family].emplace(item.key, true).second)
            continue; // of two records of a place the first counts
        judgeDrive(memory.drives[item.family], item, line <= told && visible(item),
                   memory.first_pass);
    }
    memory.crowded = memory.crowded || items.size() >= LINES_MOST;
    for (const Family family : {ONBOARD, IT, RAID}) {
        Memory::Drives& drives = memory.drives[family];
        const bool whole =
            !memory.crowded && items.size() < LINES_MOST && told > 0 &&
            std::any_of(items.begin(), items.end(), visible) &&
            (rste ? family == ONBOARD && answered("graid list") : listedWhole(family));
        if (!rste)
            judgeMissing(drives, there[family], whole);
        if (whole)
            drives.listed = Memory::Drives::yes;
        else if (drives.listed == Memory::Drives::no)
            drives.listed = Memory::Drives::maybe;
    }
}

bool asked(std::initializer_list<const char*> commands) {
    return std::any_of(commands.begin(), commands.end(),
                       [](const char* command) { return stage.asked.count(command) != 0; });
}

// Which kind of storage the agent collects. It is decided in a static pass, when graid answers.
void judgeMode(Memory& memory) {
    if (!memory.static_due && memory.mode_known)
        return;
    const bool told = answered("graid list");
    memory.rste = told ? stage.world.showsVolumes()
                       : memory.rste && !asked({"geom disk list", "storcli show", "sas3ircu list"});
    if (memory.mode_known && told) // what was there before may be new to the other collector
        for (Memory::Drives& drives : memory.drives)
            if (drives.listed == Memory::Drives::yes)
                drives.listed = Memory::Drives::maybe;
    memory.mode_known = told;
}

} // namespace

bool answered(const std::string& command, bool any_status) {
    const auto found = stage.asked.find(command);
    return found != stage.asked.end() && found->second.genuine &&
           (any_status || found->second.status == 0);
}

void judgeStatic(Memory& memory) {
    bool asked = false, told = true, garbage = false;
    for (const char* command : {"uname", "uname -r -p"}) {
        const auto found = stage.asked.find(command);
        asked = asked || found != stage.asked.end();
        garbage = garbage || (found != stage.asked.end() && found->second.garbage);
        told = told && (answered(command) || garbage);
    }
    memory.static_due = memory.static_due || asked;
    memory.static_over = told;
    memory.named = asked ? told && !garbage : memory.named;
}

std::string judgeEvents(Memory& memory) {
    flaw.clear();
    lent.clear();
    used.assign(stage.events.size(), false);
    next = 0;
    judgeLinks(memory);
    judgeStatic(memory);
    judgeMode(memory);
    if (!memory.rste)
        judgeDrives(memory, storageItems(stage.world, true),
                    std::min(storageItems(stage.world).size(), LINES_MOST), false);
    else if (stage.world.rste_enabled)
        judgeDrives(memory, rsteItems(stage.world), LINES_MOST, true);
    for (std::size_t i = 0; i < used.size(); i++)
        if (!used[i])
            object("false event: told was " + bmcsim::hexText(stage.events[i].event) +
                   ", nothing of the kind was due");
    return flaw;
}

} // namespace sim
