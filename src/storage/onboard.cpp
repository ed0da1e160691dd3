#include "storage/onboard.h"

#include "storage/drive_index.h"
#include "storage/smart_health.h"
#include "text.h"
#include "tools/ask.h"
#include "tools/camcontrol.h"
#include "tools/df.h"
#include "tools/fdisk.h"
#include "tools/geom.h"
#include "tools/gpart.h"
#include "tools/lspci.h"
#include "tools/newfs.h"
#include "tools/swapinfo.h"

#include <algorithm>
#include <cstdio>
#include <initializer_list>
#include <map>
#include <set>

namespace {

// What is remembered of a disk that was reported, while geom lists it.
struct known_disk {
    bool usb = false;
    std::string type; // SSD or HDD
    place_memory place;
};
std::map<std::string, known_disk> known_disks;

// What is asked for all partitions together.
struct partition_tables {
    partition_sizes sizes;
    space_table mounted;
    space_table swap;
    std::vector<std::string> devices; // names in /dev
};

struct onboard_pass {
    storage_items& items;
    const char* label;
    const std::vector<geom_disk>& listed;
    std::optional<partition_tables> tables = {}; // asked for the first disk that answers
};

// What a program printed that came to its end, whatever its exit status.
std::string_view answerOf(const command_line& words, const char* label,
                          const std::string& disk = "") {
    const reply& answer = ask({words, label, disk});
    return answer.end == program_end::exited ? std::string_view(answer.text) : std::string_view();
}

std::string joined(char separator, std::initializer_list<std::string> fields) {
    std::string record;
    for (const std::string& field : fields)
        record.append(field).push_back(separator);
    record.pop_back();
    return record;
}

template <class Number>
std::string shown(const std::optional<Number>& number) {
    return number.has_value() ? std::to_string(*number) : "";
}

// Not known when a factor isn't, or when 64 bits can't hold it.
std::optional<std::uint64_t> product(std::optional<std::uint64_t> a,
                                     std::optional<std::uint64_t> b) {
    std::uint64_t result = 0;
    if (!a.has_value() || !b.has_value() || __builtin_mul_overflow(*a, *b, &result))
        return std::nullopt;
    return result;
}

// CD drives are no disks, and NVMe drives are collected elsewhere.
bool isDiskName(const std::string& name) {
    const std::string kind = name.substr(0, name.find_first_of("0123456789"));
    for (const char* other : {"cd", "nda", "nvd", "nvme"})
        if (kind == other)
            return false;
    return true;
}

std::set<std::string> reported; // names of disks that were ever told

// Whether /dev shows that none of the disks is there any more.
bool allGone() {
    const std::vector<std::string> names = tools.list_folder("/dev");
    return reported.empty() ||
           (!names.empty() && std::none_of(names.begin(), names.end(), [](const std::string& name) {
               return reported.count(name) != 0;
           }));
}

// The disks that geom lists; while it does not, those that it listed last.
const std::vector<geom_disk>& listedDisks(storage_items& items, const char* label) {
    static std::vector<geom_disk> listed;
    const reply& answer = ask({geomDiskList(), label});
    std::vector<geom_disk> disks;
    if (answer.known)
        disks = parseGeomDisks(answer.text);
    if (!answer.known || (disks.empty() && !allGone())) {
        items.listingUnknown(drive_kind::onboard);
        return listed;
    }
    listed = std::move(disks);
    std::map<std::string, known_disk> still_known;
    for (const geom_disk& disk : listed)
        if (const auto known = known_disks.find(disk.name); known != known_disks.end())
            still_known.insert(known_disks.extract(known));
    for (const auto& [name, gone] : known_disks)
        forgetSmart(name);
    known_disks = std::move(still_known);
    return listed;
}

// Controllers stay where they are while the same disks are listed.
const disk_controllers& controllersOf(const onboard_pass& pass) {
    static disk_controllers controllers;
    static std::vector<std::string> told_for;
    std::vector<std::string> names;
    for (const geom_disk& disk : pass.listed)
        names.push_back(disk.name);
    if (names == told_for)
        return controllers;
    const reply& answer = ask({lspciVerbose(), pass.label});
    disk_controllers told;
    if (answer.known)
        told = parseLspci(answer.text);
    const auto empty = [](const disk_controllers& two) {
        return two.usb.empty() && two.ata.empty();
    };
    const bool whole = answer.succeeded(); // else one may be missing
    if (empty(told) || (!whole && !empty(controllers)))
        return controllers;
    controllers = std::move(told);
    if (whole)
        told_for = std::move(names);
    return controllers;
}

const partition_tables& tablesOf(onboard_pass& pass) {
    if (!pass.tables.has_value())
        pass.tables = {parseGpart(answerOf(gpartShow(), pass.label)),
                       parseSpaceTable(answerOf(dfLocal(), pass.label)),
                       parseSpaceTable(answerOf(swapinfo(), pass.label)),
                       tools.list_folder("/dev")};
    return *pass.tables;
}

std::string rpmOf(std::string rotation) {
    constexpr std::string_view UNIT = "rpm";
    for (const std::string_view end : {UNIT, std::string_view(" ")})
        if (rotation.size() >= end.size() &&
            rotation.compare(rotation.size() - end.size(), end.size(), end) == 0)
            rotation.resize(rotation.size() - end.size());
    return rotation;
}

// cylinders;sectors;tracks;heads
std::string geometryOf(const std::string& disk, const char* label) {
    const disk_geometry told = parseFdisk(answerOf(fdiskDisk(disk), label, disk));
    const auto tracks = product(told.cylinders, told.heads);
    const auto sectors = product(tracks, told.track_sectors);
    return joined(';', {shown(told.cylinders), shown(sectors), shown(tracks), shown(told.heads)});
}

std::string interfaceOf(const std::string& disk, bool usb) {
    const std::string start = disk.substr(0, 2);
    return usb ? "USB" : start == "da" ? "SCSI" : start == "ad" ? "IDE" : "N/A";
}

// `identity`: what camcontrol tells; nothing when it does not answer any more.
void addDisk(const onboard_pass& pass, const geom_disk& disk,
             const std::optional<identify_facts>& identity, known_disk& known) {
    const smart_reply smart = askSmart(smartctlDisk(disk.name), disk.name, pass.label);
    const smart_facts& facts = smart.facts;
    if (facts.recognised)
        known.usb = facts.unknown_usb_bridge;
    const disk_place place = placeOf(disk.name, smart, known.place, pass.label);
    if (identity.has_value())
        known.type = identity->trim ? "SSD" : "HDD";
    const std::string type = known.usb ? "USB" : known.type;
    const disk_controllers& controllers = controllersOf(pass);
    const std::string drive = joined(
        ':', {bare("/dev/" + disk.name), smartHealth(facts, true), facts.serial, facts.firmware});
    pass.items.add(
        joined(';', {"HD", drive, place.index, type, type == "HDD" ? rpmOf(facts.rotation) : "",
                     known.usb ? controllers.usb : controllers.ata,
                     identity.has_value() ? identity->model : "",
                     disk.bytes.has_value() ? std::to_string(*disk.bytes >> 30) : "",
                     geometryOf(disk.name, pass.label), interfaceOf(disk.name, known.usb),
                     facts.temperature}),
        smart.known && place.known, identity.has_value() && place.known);
}

std::string percentOf(const space_use& use) {
    if (use.total == 0)
        return "0";
    char text[32];
    std::snprintf(text, sizeof text, "%.2f",
                  static_cast<double>(use.used) / static_cast<double>(use.total) * 100);
    return text;
}

void addPartition(const onboard_pass& pass, const partition_tables& tables, const std::string& name,
                  const std::string& disk) {
    const std::string device = "/dev/" + name;
    const bool swap = isSwap(tables.swap, device);
    const auto use = useOf(swap ? tables.swap : tables.mounted, device);
    const std::string block_size = shown(parseNewfs(answerOf(newfsDry(device), pass.label, disk)));
    std::string percent = "0", used, available, total;
    if (use.has_value()) {
        percent = swap ? "0" : percentOf(*use);
        used = std::to_string(use->used);
        available = std::to_string(use->available);
        total = std::to_string(use->total);
    } else {
        if (!swap)
            used = available = "N/A";
        if (const auto size = tables.sizes.find(name); size != tables.sizes.end())
            total = std::to_string(size->second);
    }
    pass.items.add("PT;" +
                   joined(':', {bare(device), percent, used, available, total, block_size, ""}));
}

bool isPartitionOf(const std::string& disk, const std::string& name) {
    return name.compare(0, disk.size(), disk) == 0 && name[disk.size()] >= 'a' &&
           name[disk.size()] <= 'z';
}

void collectDisk(onboard_pass& pass, const geom_disk& disk) {
    const reply& answer = ask({camcontrolIdentify(disk.name), pass.label, disk.name});
    std::optional<identify_facts> identity;
    if (answer.succeeded())
        identity = parseIdentify(answer.text);
    if (identity.has_value() && !identity->has_model)
        identity.reset();
    if (!identity.has_value() && known_disks.count(disk.name) == 0) {
        pass.items.leaveOpen(bare("/dev/" + disk.name)); // none of ATA, or not yet
        return;
    }
    reported.insert(disk.name);
    addDisk(pass, disk, identity, known_disks[disk.name]);
    const partition_tables& tables = tablesOf(pass);
    for (const std::string& name : tables.devices)
        if (isPartitionOf(disk.name, name) && !pass.items.full())
            addPartition(pass, tables, name, disk.name);
}

} // namespace

void collectOnboard(storage_items& items, const char* label) {
    if (items.full())
        return;
    onboard_pass pass{items, label, listedDisks(items, label)};
    for (const geom_disk& disk : pass.listed)
        if (isDiskName(disk.name) && !items.full())
            collectDisk(pass, disk);
}
