// The storage and NVMe records of a world, field by field.
#include "oracle.h"

#include <algorithm>
#include <cstring>

namespace sim {

std::string filled(std::string text, std::string_view separators) {
    const auto parts = [&](char one) { return separators.find(one) != std::string_view::npos; };
    for (std::size_t at = 1; at < text.size(); at++)
        if (parts(text[at - 1]) && parts(text[at]))
            text.insert(at, "N/A");
    return text;
}

std::string join(const std::vector<std::string>& fields, const char* separator) {
    std::string text;
    for (std::size_t i = 0; i < fields.size(); i++)
        text += (i == 0 ? "" : separator) + fields[i];
    return text;
}

namespace {

template <class... Fields>
std::string record(const Fields&... fields) {
    return filled((say("{};", fields) + ...), ";:");
}

std::string replaced(std::string text, const char* blank) {
    for (std::size_t at = 0; (at = text.find(' ', at)) != std::string::npos;)
        text.replace(at, 1, blank);
    return text;
}

const char* const PREDICTED = "PredictiveFailureAnalysis";
const char* const HEALTH_WORDS[] = {"OK", PREDICTED, PREDICTED, "Fail", ""}; // by Health

// By the drive map, else by its bus; -1: nobody knows.
int indexOf(const World& world, const Disk& disk) {
    const auto mapped = world.drive_map.find(disk.serial);
    return mapped != world.drive_map.end() && !disk.usb ? mapped->second : disk.bus;
}

std::string indexText(int index) {
    return index < 0 ? "" : std::to_string(index);
}

Item onboardItem(const World& world, const Disk& disk, const std::string& rest, int index) {
    const bool silent = disk.usb || disk.health == Health::silent;
    const std::string key = "/dev/" + disk.name;
    const std::string state = silent ? "N/A" : HEALTH_WORDS[static_cast<int>(disk.health)];
    const std::string text = record(
        "HD",
        say("{}:{}:{}:{}", key, state, disk.usb ? "" : disk.serial, disk.usb ? "" : disk.firmware),
        indexText(index) + rest);
    return {text,
            ONBOARD,
            key,
            state,
            index,
            0,
            0,
            0,
            {"geom disk list", "camcontrol identify " + disk.name},
            "smartctl -i -H -A " + key,
            world.drive_map.count(disk.serial) != 0 && !disk.usb,
            disk.serial};
}

Item diskItem(const World& world, const Disk& disk) {
    const int heads = 16, track = 63, tracks = disk.cylinders * heads;
    const bool temperature = disk.temperature >= 0 && !disk.usb && disk.health != Health::silent;
    const bool spins = !disk.usb && !disk.ssd;
    return onboardItem(world, disk,
                       say(";{};{};{};{};{};{};{};{};{};{};{}",
                           disk.usb   ? "USB"
                           : disk.ssd ? "SSD"
                                      : "HDD",
                           spins ? std::to_string(disk.rpm) : "",
                           disk.usb ? "Fabrikam Corporation Q87 USB"
                                    : "Fabrikam Corporation Q87 6-Port SATA  AHCI mode",
                           disk.model, disk.gigabytes, disk.cylinders, std::int64_t{tracks} * track,
                           tracks, heads, disk.usb ? "USB" : "IDE",
                           temperature ? std::to_string(disk.temperature) : ""),
                       indexOf(world, disk));
}

Item partitionItem(const Partition& one) {
    const auto total = static_cast<double>(one.total);
    const std::string block = one.block == 0 ? "" : std::to_string(one.block);
    const std::string amounts =
        one.use == Use::unmounted
            ? say("0:N/A:N/A:{}", one.bytes)
            : say("{}:{}:{}:{}",
                  one.use == Use::swap
                      ? "0"
                      : format("%.2f", static_cast<double>(one.used) / total * 100),
                  one.used * 1024, one.available * 1024, one.total * 1024);
    return {record("PT", say("/dev/{}:{}:{}:", one.name, amounts, block))};
}

std::string hundredths(int megabytes) {
    return format("%d.%02d", megabytes / 1024, megabytes % 1024 * 100 / 1024);
}

std::string place(int controller, const Drive& drive) {
    return say("C{}E{}S{}", controller, drive.enclosure, drive.slot);
}

std::string members(int controller, const Controller& of, const Volume& volume) {
    std::vector<std::string> places;
    for (const std::size_t member : volume.members)
        places.push_back(place(controller, of.drives.at(member)));
    while (join(places, ",").size() > 200)
        places.pop_back();
    return join(places, ",");
}

std::string sasHealth(const std::string& state) {
    const std::map<std::string, std::string> words = {
        {"Okay", "OK"},      {"Initializing", "OK"}, {"Inactive,Okay", "OK"}, {"Optimal", "OK"},
        {"HotSpare", "OK"},  {"Ready", "OK"},        {"Degraded", PREDICTED}, {"Failed", "Fail"},
        {"Missing", "Miss"}, {"Standby", "Standby"}};
    const auto found = words.find(state);
    return found == words.end() ? "" : found->second;
}

// `index`: how many of the kind come before.
void addSas(std::vector<Item>& items, const Controller& controller, int index) {
    const bool ir = controller.kind == Kind::sas_ir;
    items.push_back({record(ir ? "BRCM_IR_CNTL" : "BRCM_II_CNTL", index, controller.number,
                            "SAS3008", "8.35.00.00", "15.00.00.00", "1 Serial Attached SCSI")});
    for (const Volume& volume : controller.volumes) {
        const bool unknown = volume.level == "Unknown";
        items.push_back({record("BRCM_IR_VD", 323 - volume.id, say("{}-{}", index, volume.id),
                                sasHealth(volume.state), volume.state, volume.level,
                                unknown ? "" : hundredths(volume.megabytes),
                                unknown ? "" : members(index, controller, volume))});
    }
    int row = 0;
    for (const Drive& drive : controller.drives) {
        if (!drive.there)
            continue;
        const std::string state = replaced(drive.state, "");
        const bool bare = state == "Missing" || state == "Standby";
        const std::string key = place(index, drive);
        items.push_back(
            {record(ir ? "BRCM_IR_PD" : "BRCM_IT_PD", row++,
                    say(":{}:{}:{}:{}", bare ? state : sasHealth(state), state, drive.serial,
                        bare ? "" : drive.firmware),
                    key, drive.type.substr(5), "", "ATA " + (bare ? "" : replaced(drive.model, "")),
                    bare ? "" : hundredths(drive.megabytes)),
             ir ? RAID : IT, key, state, -1, index, drive.enclosure, drive.slot});
    }
}

void addMegaraid(std::vector<Item>& items, const Controller& controller, int /*index*/) {
    for (const Drive& drive : controller.drives)
        if (const bool warned = drive.health == Health::warned; drive.there)
            items.push_back(
                {record("LSI", say("/dev/pass{}:{}:{}:{}:{}", drive.device_id,
                                   HEALTH_WORDS[warned ? 0 : static_cast<int>(drive.health)],
                                   drive.serial, drive.firmware, drive.slot))});
}

void addCard(std::vector<Item>& items, const Controller& card, int index) {
    items.push_back(
        {record("BRCM_IR_CNTL", index == 0 ? "" : std::to_string(index), card.number,
                replaced(storcliModel(card), "_"), "6.22.03.0", "4.270_beta", "SAS-12G")});
    for (const Volume& volume : card.volumes) {
        const bool degraded = volume.state == "Dgrd" || volume.state == "Pdgd";
        items.push_back(
            {record("BRCM_IR_VD", volume.id, say("/dev/mfid{}", volume.id),
                    degraded ? PREDICTED : "OK", volume.state, volume.level,
                    say("{}.0", volume.megabytes), members(card.number, card, volume))});
    }
    int row = 0;
    for (const Drive& drive : card.drives) {
        if (!drive.there)
            continue;
        const bool bad = drive.state == "UBad" || drive.state == "UBUnsp";
        const std::string key = place(card.number, drive);
        items.push_back({record("BRCM_IR_PD", row++,
                                say("{}:{}:{}:{}:{}", drive.wwn, bad ? "Fail" : "OK", drive.state,
                                    drive.serial, drive.firmware),
                                key, drive.type, "", replaced(drive.model, "_"),
                                format("%d.%02d", drive.megabytes / 1024, drive.megabytes % 100)),
                         RAID, key, drive.state, -1, card.number, drive.enclosure, drive.slot});
    }
}

std::string counterAt(const std::array<std::uint8_t, 512>& health, std::size_t at) {
    std::uint64_t low = 0, high = 0; // little-endian, as this machine is
    std::memcpy(&low, &health.at(at), 8);
    std::memcpy(&high, &health.at(at + 8), 8);
    return std::to_string(high != 0 ? INT64_MAX : std::min<std::uint64_t>(low, INT64_MAX));
}

// Those of the controllers of some kinds. Who lists them is asked by `form`.
void addControllers(std::vector<Item>& items, const World& world, Kind first, Kind last,
                    void (*add)(std::vector<Item>& items, const Controller& one, int index),
                    const char* form) {
    int index = 0;
    for (const Controller& one : world.controllers) {
        if (!one.there || one.kind < first || one.kind > last ||
            !(one.isSas() ? world.has_sas3ircu : world.has_storcli))
            continue;
        const std::size_t before = items.size();
        add(items, one, index++);
        for (std::size_t i = before; i < items.size(); i++)
            items[i].listed_by = {one.isSas() ? "sas3ircu list" : "storcli show",
                                  say(form, one.number)};
    }
}

} // namespace

std::vector<Item> storageItems(const World& world, bool all) {
    std::vector<Item> items;
    addControllers(items, world, Kind::megaraid, Kind::megaraid, addMegaraid,
                   "storcli /c{} /eall /sall show");
    addControllers(items, world, Kind::sas_it, Kind::sas_ir, addSas, "sas3ircu {} display");
    for (const Disk& disk : world.disks) {
        if (!disk.there || !disk.ata)
            continue;
        items.push_back(diskItem(world, disk));
        const auto by = items.back().listed_by;
        for (const Partition& one : disk.partitions) {
            items.push_back(partitionItem(one));
            items.back().listed_by = by;
        }
    }
    if (!all)
        items.resize(std::min(items.size(), LINES_MOST));
    const std::size_t most = all ? SIZE_MAX : std::max(LINES_MOST, items.size() + 1);
    if (world.cards_enabled && (all || !items.empty()))
        addControllers(items, world, Kind::card, Kind::card, addCard, "storcli /c{} show");
    items.resize(std::min(items.size(), most));
    return items;
}

std::vector<Item> rsteItems(const World& world) {
    std::vector<Item> items;
    int place = 0;
    for (const Rste& volume : world.volumes) {
        std::map<std::string, const Disk*> disks;
        std::vector<std::string> indexes;
        for (const std::string& name : volume.members)
            if (const Disk* disk = diskNamed(world, name); disk->there) {
                disks[name] = disk;
                indexes.push_back(indexText(indexOf(world, *disk)));
            }
        items.push_back({record("Logical", volume.provider, volume.state, "Intel RSTe",
                                volume.members.size(), volume.level, join(indexes, ":"), place)});
        for (const auto& [name, disk] : disks) {
            const int index = indexOf(world, *disk);
            items.push_back(onboardItem(world, *disk, "", index < 0 ? -1 : place * 16 + index));
            items.back().listed_by = {"graid list"};
        }
        ++place;
    }
    return items;
}

std::vector<std::string> nvmeRecords(const World& world) {
    std::map<std::string, std::string> records; // by name, as a folder lists them
    for (const Nvme& nvme : world.nvmes) {
        if (!nvme.there)
            continue;
        const auto& health = nvme.health;
        const auto kelvin = static_cast<float>(health[1] + health[2] * 256);
        const std::string name = say("nvme{}", nvme.number);
        std::vector<std::string> fields = {
            name, std::to_string(health[0]),
            format("%2.2f C", static_cast<double>(kelvin - 273.15F))};
        for (const std::size_t at : {3U, 4U, 5U})
            fields.push_back(format("%d%%", health.at(at)));
        for (std::size_t at = 32; at <= 176; at += 16)
            fields.push_back(counterAt(health, at));
        fields.emplace_back(NVME_MODEL, 31); // without the blanks behind
        fields.push_back(std::to_string(nvme.blocks << nvme.block_bits >> 10));
        fields.push_back(nvme.serial);
        for (std::size_t i = 0; i < fields.size(); i++)
            records[name] += format("%02zu:", i) + fields[i] + ";";
        records[name] = filled(records[name].substr(0, 254), ";:");
    }
    std::vector<std::string> texts;
    for (const auto& record : records)
        texts.push_back(record.second);
    return texts;
}

} // namespace sim
