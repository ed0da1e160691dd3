#include "storage/rste.h"

#include "storage/drive_index.h"
#include "storage/listing.h"
#include "storage/smart_health.h"
#include "text.h"
#include "tools/ask.h"
#include "tools/graid.h"

#include <map>

namespace {

// Where the members sat, by disk, the last time that all volumes were listed.
std::map<std::string, place_memory> places;

struct rste_member {
    smart_reply smart;
    disk_place place;
};

// What the collection of the volumes has come to.
struct rste_pass {
    storage_items& items;
    const char* label;
    std::map<std::string, place_memory> seen = {}; // by disk

    rste_member member(const std::string& disk) {
        static bool map_seen = false;
        map_seen = map_seen || mapReadable();
        rste_member member{askSmart(smartctlDisk(disk), disk, label), {"0", true}};
        if (map_seen) // without a drive map every disk has the same index
            member.place = placeOf(disk, member.smart, seen[disk] = places[disk], label);
        return member;
    }
};

std::string combinedIndex(std::uint64_t volume, const std::string& drive) {
    constexpr std::uint64_t DRIVES_OF_VOLUME = 16;
    std::uint64_t combined = 0;
    const auto index = wholeNumber(drive);
    if (!index.has_value() || __builtin_add_overflow(volume * DRIVES_OF_VOLUME, *index, &combined))
        return "";
    return std::to_string(combined);
}

void addVolume(rste_pass& pass, const graid_volume& volume, std::uint64_t place) {
    std::map<std::string, rste_member> members; // by disk
    std::vector<std::string> indexes;
    for (const std::string& disk : volume.members) {
        if (members.count(disk) == 0)
            members.emplace(disk, pass.member(disk));
        indexes.push_back(members[disk].place.index);
    }
    pass.items.add(withList("Logical;" + volume.name + ";" + volume.state + ";Intel RSTe;" +
                                volume.components + ";" + volume.level + ";",
                            indexes, ':', ";" + std::to_string(place)));
    for (const auto& [disk, member] : members) {
        const smart_facts& facts = member.smart.facts;
        pass.items.add("HD;/dev/" + disk + ":" + smartHealth(facts, false) + ":" + facts.serial +
                           ":" + facts.firmware + ";" + combinedIndex(place, member.place.index),
                       member.smart.known && member.place.known,
                       member.place.known && pass.items.allListed(drive_kind::onboard));
    }
}

} // namespace

void collectRste(storage_items& items, const char* label) {
    const reply& answer = ask({graidList(), label});
    const std::vector<graid_volume> volumes = parseGraidList(printedText(answer));
    if (!isWholeListing(graidList(), answer, !volumes.empty()))
        items.listingUnknown(drive_kind::onboard);
    if (volumes.empty())
        return;
    rste_pass pass{items, label};
    std::uint64_t place = 0;
    for (const graid_volume& volume : volumes) {
        if (items.full())
            break;
        addVolume(pass, volume, place++);
    }
    if (items.allListed(drive_kind::onboard))
        places = std::move(pass.seen);
}
