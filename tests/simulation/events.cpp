// Which events are due after a pass. A subject whose questions were all answered as the world has
// it owes its events; one that could not be asked may tell what is true, and nothing else.
#include "oracle.h"

#include "config/configuration.h"
#include "config/logs.h"

#include <algorithm>
#include <utility>

namespace sim {

namespace {

constexpr int ASSERTED = 0x70, CLEARED = 0xF0, PRESENCE = 0xA0;

std::string flaw;       // the first one of this pass
std::vector<bool> used; // attempts that were due
std::size_t next = 0;   // the first attempt behind the last that was due in order

// Optional events that were found: those of another drive may have the same bytes.
struct Lent {
    std::size_t at;
    Subject* subject;
    Subject before;
};
std::vector<Lent> lent;

bmcsim::Bytes eventOf(std::initializer_list<int> bytes) {
    bmcsim::Bytes event = {0x41, 0x04};
    for (const int byte : bytes)
        event.push_back(static_cast<std::uint8_t>(byte));
    return event;
}

enum class Told { taken, refused, absent };

// An event is due: whether it was sent, and taken. `in_order` false: anywhere in what is left.
Told tell(const bmcsim::Bytes& event, bool required, const std::string& who, bool in_order = true) {
    const auto& events = stage.events;
    const auto fate = [&](auto at) { return events[at].second ? Told::taken : Told::refused; };
    std::size_t at = next;
    while (!in_order && at < events.size() && (used[at] || events[at].first != event))
        ++at;
    if (at < events.size() && events[at].first == event) {
        used[at] = true;
        while (next < events.size() && used[next])
            ++next;
        return fate(at);
    }
    for (auto one = lent.begin(); required && one != lent.end(); ++one)
        if (events[one->at].first == event) {
            *one->subject = one->before;
            at = one->at;
            lent.erase(one);
            return fate(at);
        }
    if (required && !stage.away && flaw.empty())
        flaw = say("missed event: due was {} of {}, told was {}", bmcsim::hexText(event), who,
                   next < events.size() ? bmcsim::hexText(events[next].first) : "nothing");
    return Told::absent;
}

// Whether a command line was answered as the world has it, with success.
bool answered(const std::string& command, bool any_status = false) {
    const auto found = stage.asked.find(command);
    return found != stage.asked.end() && found->second.genuine &&
           (any_status || found->second.status == 0);
}

bool rowReadable(const Nic& nic) {
    return std::none_of(stage.faults.begin(), stage.faults.end(), [&](const Fault& fault) {
        return fault.what == "row count" || fault.what == "addresses" ||
               (fault.what == "row gone" && fault.number == nic.row) ||
               (fault.what == "row error" && fault.number >= nic.row);
    });
}

void judgeLinks(Memory& memory) {
    const std::vector<const Nic*> nics = reportedNics(stage.world, LAN_MOST);
    const std::size_t more = faultOf("row gone") == nullptr ? 0 : stage.faults.size();
    for (const Nic* nic : nicsByMac(stage.world, LAN_MOST + more)) {
        // One behind the most is only reported when others can't be read.
        const bool required = std::find(nics.begin(), nics.end(), nic) != nics.end() &&
                              rowReadable(*nic) && answered("ifconfig -a");
        bool& told = memory.links[nic->name];
        if (nic->linked() == told)
            continue;
        const int type = nic->linked() ? 0xA1 : 0xA2;
        // Nothing is sent without link events; it counts as told all the same.
        if (stage.world.link_events ? tell(eventOf({0xD0, 0xFF, 0x6F, type, nic->row, 0xFF}),
                                           required, nic->name) == Told::taken
                                    : required)
            told = nic->linked();
    }
}

const std::map<std::pair<Family, std::string>, int> TYPES = {
    {{ONBOARD, "Fail"}, 0xA1},  {{ONBOARD, "PredictiveFailureAnalysis"}, 0xA2},
    {{IT, "Degraded"}, 0xA2},   {{IT, "Failed"}, 0xA1},
    {{IT, "HotSpare"}, 0xA3},   {{IT, "OutofSync"}, 0xA5},
    {{IT, "Rebuilding"}, 0xA7}, {{RAID, "Degraded"}, 0xA2},
    {{RAID, "UBad"}, 0xA1},     {{RAID, "UBUnsp"}, 0xA1},
    {{RAID, "DHS"}, 0xA3},      {{RAID, "GHS"}, 0xA3},
    {{RAID, "HSPShld"}, 0xA3},  {{RAID, "OutofSync"}, 0xA5},
    {{RAID, "Rbld"}, 0xA7}};

int typeOf(Family family, const std::string& state) {
    const auto found = TYPES.find({family, state});
    return found == TYPES.end() ? 0 : found->second;
}

// What a change from `old` to `state` clears, 0: nothing. A failed onboard drive only clears by
// being well again.
int clearedBy(Family family, const std::string& old, const std::string& state) {
    const int type = typeOf(family, old);
    return family == ONBOARD && type == 0xA1 && state != "OK" ? 0 : type;
}

// `as`: RAID drives are missing with the sensor and the bytes of IT drives.
bmcsim::Bytes driveEvent(const Item& item, int alert, int type, Family as) {
    if (as == IT)
        return eventOf(
            {0x0D, 0x5F, alert, type, item.slot, item.controller * 64 + (item.enclosure & 0x3F)});
    const int place =
        as == RAID ? item.controller * 16 + (item.slot & 0x0F) : std::max(item.index, 0);
    return eventOf({0x0D, 0xFF, alert, type, place, 0xFF});
}

// What is still to be told of a state, as far as it was sent.
void judgeState(Subject& subject, const Item& item, bool required) {
    const auto send = [&](int alert, int type) {
        return type == 0 || tell(driveEvent(item, alert, type, item.family), required,
                                 item.key + " " + item.state) == Told::taken;
    };
    if (!subject.raised.empty()) {
        if (!send(CLEARED, clearedBy(item.family, subject.told, subject.raised)))
            return;
        subject.told = std::exchange(subject.raised, "");
    }
    const int asserted = typeOf(item.family, item.state);
    const int cleared = clearedBy(item.family, subject.told, item.state);
    if (item.state == subject.told || !send(ASSERTED, asserted))
        return;
    if (asserted != 0)
        subject.raised = item.state;
    if (!send(CLEARED, cleared))
        return;
    if (required || asserted != 0 || cleared != 0)
        subject.told = item.state;
    subject.raised.clear();
}

// The arrival of a drive that was not told present. `certain`: it was seen, and where it sits.
void judgeArrival(Subject& subject, const Item& item, bool certain) {
    const bool unsure = subject.presence == Subject::unsure;
    const Told told = tell(driveEvent(item, CLEARED, PRESENCE, item.family), certain && !unsure,
                           item.key + " arrives");
    if (told == Told::taken || (unsure && told == Told::absent && certain && !stage.away)) {
        subject.presence = Subject::present;
        if (told == Told::taken || !subject.moved)
            subject.item = item;
        subject.moved = false;
    } else if (unsure && told == Told::refused) {
        subject.presence = Subject::untold;
    }
}

Subject newSubject(const Drives& drives, const Item& item, bool placed, bool first_pass) {
    Subject subject;
    subject.item = item;
    subject.placed = placed;
    // Without a drive before, or with none that was seen for certain: may be the first pass.
    const bool none_sure = item.family == ONBOARD &&
                           std::all_of(drives.known.begin(), drives.known.end(), [](auto& one) {
                               return one.second.presence == Subject::unsure;
                           });
    if (!first_pass && drives.listed != Drives::no && !(none_sure && drives.known.empty()))
        subject.presence =
            drives.listed == Drives::maybe || none_sure ? Subject::unsure : Subject::untold;
    return subject;
}

// Of a drive that the pass lists and may have seen (`visible`: must have).
void judgeDrive(Drives& drives, const Item& item, bool visible, bool first_pass) {
    const bool placed =
        item.state_by.empty() || (answered(item.state_by, true) && readable(hdd_file) &&
                                  (item.mapped || answered("camcontrol devlist")));
    const bool certain = visible && placed, is_new = drives.known.count(item.key) == 0;
    Subject subject =
        is_new ? newSubject(drives, item, placed, first_pass) : drives.known[item.key];
    const std::size_t before = next;
    if (subject.presence != Subject::present)
        judgeArrival(subject, item, certain);
    if (subject.presence == Subject::present || subject.presence == Subject::unsure)
        judgeState(subject, item, subject.presence == Subject::present && certain);
    if (subject.presence == Subject::unsure && next != before)
        subject.presence = Subject::present;
    if (is_new && !visible && next == before)
        subject.presence = Subject::unsure;           // nobody knows whether it was seen
    const bool told_place = placed || next != before; // what was told named the place
    if (told_place && (!subject.placed || subject.item.index < 0))
        subject.item = item;
    subject.placed = subject.placed || told_place;
    subject.serial = item.serial;
    if (!item.serial.empty())
        subject.serials.insert(item.serial);
    Subject& known = drives.known[item.key];
    Subject old = std::exchange(known, subject);
    if (is_new) {
        drives.order.push_back(item.key);
        old = subject;
        old.presence = Subject::unsure;
        old.told = old.raised = "";
    }
    for (std::size_t at = before; at < next && !certain; at++)
        lent.push_back({at, &known, old});
}

// The index of a missing onboard drive is that of its arrival; without one, that of the drive
// missing `previous` to it.
Told tellMissing(const Subject& subject, bool required, int index, int& previous) {
    Item item = subject.item;
    item.index = index < 0 ? previous : index;
    const Family as = item.family == RAID ? IT : item.family;
    const Told told =
        tell(driveEvent(item, ASSERTED, PRESENCE, as), required, item.key + " is missing", false);
    if (told != Told::absent)
        previous = std::max(item.index, 0);
    return told;
}

// Those that must be known come first: another may be missing with the same bytes. A disk that is
// there under another name need not be told.
void judgeMissing(Drives& drives, const std::set<std::string>& there, bool whole, bool sure) {
    std::set<std::string> serials;
    for (const std::string& key : there)
        serials.insert(drives.known[key].serial);
    int previous = 0;
    for (std::size_t i = 0; i < drives.order.size(); i++) {
        const std::string key = drives.order[i];
        Subject& subject = drives.known[key];
        if (there.count(key) != 0 || subject.presence == Subject::missing ||
            sure == (subject.presence == Subject::unsure))
            continue;
        if (subject.presence == Subject::untold) {
            subject.presence = whole ? Subject::missing : Subject::untold;
            continue;
        }
        const bool unsure = subject.presence == Subject::unsure;
        const bool moved =
            std::any_of(serials.begin(), serials.end(), [&](const std::string& serial) {
                return subject.serials.count(serial) != 0;
            });
        Told told = subject.placed ? Told::absent : tellMissing(subject, false, -1, previous);
        if (told == Told::absent)
            told = tellMissing(subject, whole && !unsure && !moved, subject.item.index, previous);
        if (told == Told::taken) {
            subject.presence = Subject::missing;
        } else if (moved && whole && told == Told::absent) {
            subject.presence = stage.away ? Subject::unsure : Subject::missing;
            subject.moved = stage.away;
        } else if (unsure && whole && told == Told::absent && !stage.away) {
            drives.known.erase(key); // it was never seen
            drives.order.erase(drives.order.begin() + static_cast<std::ptrdiff_t>(i--));
        }
    }
}

bool listedOnboard() {
    const auto& disks = stage.world.disks;
    const bool any = std::any_of(disks.begin(), disks.end(), [](auto& disk) { return disk.there; });
    return answered("geom disk list") && (any || faultOf("folders") == nullptr);
}

bool listedControllers(bool with_cards) {
    const World& world = stage.world;
    const auto told = [](bool installed, const char* list) {
        return answered(list) ||
               (answered(list, true) && (!installed || stage.succeeded.count(list) == 0));
    };
    bool whole = told(world.has_sas3ircu, "sas3ircu list") &&
                 (!with_cards || (told(world.has_storcli, "storcli show") && readable(ini_file)));
    for (const Controller& one : world.controllers)
        if (one.there && one.isSas() && world.has_sas3ircu)
            whole = whole && answered(say("sas3ircu {} display", one.number));
        else if (one.there && one.kind == Kind::card && world.has_storcli && with_cards)
            whole = whole && answered(say("storcli /c{} show", one.number));
    return whole;
}

bool visible(const Item& item) {
    return std::all_of(item.listed_by.begin(), item.listed_by.end(),
                       [](const std::string& list) { return answered(list); });
}

// `told`: so many items a whole pass tells.
void judgeDrives(Memory& memory, const std::vector<Item>& items, std::size_t told) {
    std::set<std::string> there[FAMILIES];
    for (std::size_t line = 0; line < items.size(); line++) {
        const Item& item = items[line]; // of two records of a place the first counts
        if (item.family != NO_DRIVE && item.state != "Missing" &&
            there[item.family].insert(item.key).second)
            judgeDrive(memory.drives.at(item.family), item, line < told && visible(item),
                       memory.first_pass);
    }
    memory.crowded = memory.crowded || items.size() >= LINES_MOST;
    const bool any =
        !memory.crowded && told > 0 && std::any_of(items.begin(), items.end(), visible);
    for (const Family family : {ONBOARD, IT, RAID}) {
        Drives& drives = memory.drives.at(family);
        const bool whole =
            any &&
            (memory.rste         ? family == ONBOARD && answered("graid list")
             : family == ONBOARD ? listedOnboard()
                                 : listedControllers(family == RAID && stage.world.cards_enabled));
        for (const bool sure : {true, false})
            if (!memory.rste)
                judgeMissing(drives, there[family], whole, sure);
        drives.listed = whole                         ? Drives::yes
                        : drives.listed == Drives::no ? Drives::maybe
                                                      : drives.listed;
    }
}

// Whether the pass told the static values, and with what result.
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

// Which kind of storage the agent collects: graid tells. What it prints with a bad status is
// believed or not, which shows in what else was asked.
void judgeMode(Memory& memory) {
    if (!memory.static_due && memory.mode_known)
        return;
    const bool told = answered("graid list");
    const auto found = stage.asked.find("graid list");
    const bool seen = found != stage.asked.end() && found->second.whole;
    if (seen)
        memory.rste = !stage.world.volumes.empty();
    for (const char* command : {"geom disk list", "storcli show", "sas3ircu list"})
        memory.rste = memory.rste && (told || stage.asked.count(command) == 0);
    for (Drives& drives : memory.drives) // what was there before may be new to the other collector
        if (memory.mode_known && seen && drives.listed == Drives::yes)
            drives.listed = Drives::maybe;
    memory.mode_known = told;
}

} // namespace

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
                    std::min(storageItems(stage.world).size(), LINES_MOST));
    else if (stage.world.rste_enabled)
        judgeDrives(memory, rsteItems(stage.world), LINES_MOST);
    for (std::size_t i = 0; i < used.size() && flaw.empty(); i++)
        if (!used[i])
            flaw = say("false event: told was {}, nothing of the kind was due",
                       bmcsim::hexText(stage.events[i].first));
    return flaw;
}

} // namespace sim
