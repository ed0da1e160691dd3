#include "storage/rste.h"

#include "storage/drive_index.h"
#include "storage/listing.h"
#include "storage/smart_health.h"
#include "text.h"
#include "tools/ask.h"
#include "tools/graid.h"

#include <map>

namespace {

struct rste_member {
    std::string index;
    smart_reply smart;
};

// What the collection of the volumes has come to.
struct rste_pass {
    storage_items& items;
    const char* label;
    bool map_readable = mapReadable();
    // Of the member before: without a drive map every drive has that of the first.
    std::string drive_index = "0";

    rste_member member(const std::string& disk) {
        // A serial that could not be read does not move a disk.
        static std::map<std::string, std::string> last_indexes;
        const smart_reply smart = askSmart(smartctlDisk(disk), disk, label);
        if (map_readable)
            drive_index = mapIndex(smart.facts.serial);
        if (drive_index.empty())
            drive_index = busIndex(disk, label).value_or("");
        const auto last = last_indexes.find(disk);
        if (last != last_indexes.end() && !smart.known && smart.facts.serial.empty())
            return {last->second, smart};
        last_indexes[disk] = drive_index;
        return {drive_index, smart};
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
        indexes.push_back(members[disk].index);
    }
    pass.items.add(withList("Logical;" + volume.name + ";" + volume.state + ";Intel RSTe;" +
                                volume.components + ";" + volume.level + ";",
                            indexes, ':', ";" + std::to_string(place)));
    for (const auto& [disk, member] : members) {
        const smart_facts& facts = member.smart.facts;
        pass.items.add("HD;/dev/" + disk + ":" + smartHealth(facts, false) + ":" + facts.serial +
                           ":" + facts.firmware + ";" + combinedIndex(place, member.index),
                       member.smart.known);
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
            return;
        addVolume(pass, volume, place++);
    }
}
