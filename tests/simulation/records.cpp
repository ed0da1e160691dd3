// The records of a world, field by field.
#include "oracle.h"

#include <algorithm>

namespace sim {

// Every empty field between two separators is N/A.
std::string filled(const std::string& text, const char* separators) {
    std::string result;
    for (const char character : text) {
        const bool both =
            !result.empty() &&
            std::string_view(separators).find(character) != std::string_view::npos &&
            std::string_view(separators).find(result.back()) != std::string_view::npos;
        result += both ? "N/A" : "";
        result += character;
    }
    return result;
}

std::string join(const std::vector<std::string>& fields, const char* separator) {
    std::string text;
    for (std::size_t i = 0; i < fields.size(); i++)
        text += (i == 0 ? "" : separator) + fields[i];
    return text;
}

namespace {

std::string number(std::int64_t value) {
    return std::to_string(value);
}

std::string without(std::string text, char left_out) {
    text.erase(std::remove(text.begin(), text.end(), left_out), text.end());
    return text;
}

std::string underscored(std::string text) {
    std::replace(text.begin(), text.end(), ' ', '_');
    return text;
}

const char* healthOf(Health health) {
    switch (health) {
    case Health::well:
        return "OK";
    case Health::predicted:
    case Health::warned:
        return "PredictiveFailureAnalysis";
    case Health::failed:
        return "Fail";
    default:
        return "";
    }
}

// By the drive map, else by its bus.
int indexOf(const World& world, const Disk& disk) {
    const auto mapped = world.drive_map.find(disk.serial);
    return mapped != world.drive_map.end() && !disk.usb ? mapped->second : disk.bus;
}

std::string indexText(int index) {
    return index < 0 ? "" : number(index);
}

Item onboardItem(const World& world, const Disk& disk, const std::string& rest, int index) {
    const bool silent = disk.usb || disk.health == Health::silent;
    Item item;
    item.family = ONBOARD;
    item.key = "/dev/" + disk.name;
    item.state = silent ? "N/A" : healthOf(disk.health);
    item.index = index;
    item.mapped = world.drive_map.count(disk.serial) != 0 && !disk.usb;
    item.text = "HD;" + item.key + ":" + (silent ? "" : item.state) + ":" +
                (disk.usb ? "" : disk.serial) + ":" + (disk.usb ? "" : disk.firmware) + ";" +
                indexText(index) + rest + ";";
    item.listed_by = {"geom disk list", "camcontrol identify " + disk.name};
    item.state_by = "smartctl -i -H -A " + item.key;
    return item;
}

Item diskItem(const World& world, const Disk& disk) {
    const std::int64_t tracks = static_cast<std::int64_t>(disk.cylinders) * disk.heads;
    const bool temperature = disk.temperature >= 0 && !disk.usb && disk.health != Health::silent;
    const char* const type = disk.usb ? "USB" : disk.ssd ? "SSD" : "HDD";
    return onboardItem(world, disk,
                       ";" + join({type, type == std::string("HDD") ? number(disk.rpm) : "",
                                   disk.usb ? "Fabrikam Corporation Q87 USB"
                                            : "Fabrikam Corporation Q87 6-Port SATA  AHCI mode",
                                   disk.model, number(static_cast<std::int64_t>(disk.bytes >> 30)),
                                   number(disk.cylinders), number(tracks * disk.track),
                                   number(tracks), number(disk.heads), disk.usb ? "USB" : "IDE",
                                   temperature ? number(disk.temperature) : ""},
                                  ";"),
                       indexOf(world, disk));
}

Item partitionItem(const Partition& one) {
    const auto bytes = [](std::int64_t kilobytes) { return number(kilobytes * 1024); };
    const std::string block = one.block == 0 ? "" : number(one.block);
    std::vector<std::string> fields = {"PT;/dev/" + one.name, "0", bytes(one.used),
                                       bytes(one.available), bytes(one.total)};
    if (one.use == Use::unmounted)
        fields = {fields[0], "0", "N/A", "N/A", number(static_cast<std::int64_t>(one.bytes))};
    if (one.use == Use::mounted)
        fields[1] =
            format("%.2f", static_cast<double>(one.used) / static_cast<double>(one.total) * 100);
    return {join(fields, ":") + ":" + block + ":;"};
}

// ---- Controllers

std::string hundredths(std::int64_t megabytes) {
    return format("%lld.%02lld", static_cast<long long>(megabytes / 1024),
                  static_cast<long long>(megabytes % 1024 * 100 / 1024));
}

std::string place(int controller, const Drive& drive) {
    return format("C%dE%dS%d", controller, drive.enclosure, drive.slot);
}

std::string members(int controller, const Controller& of, const Volume& volume) {
    std::vector<std::string> places;
    for (const int member : volume.members)
        places.push_back(place(controller, of.drives.at(static_cast<std::size_t>(member))));
    while (join(places, ",").size() > 200)
        places.pop_back();
    return join(places, ",");
}

std::string sasVolumeHealth(std::string state) {
    state = state.substr(state.find(',') + 1);
    if (state == "Okay" || state == "Online" || state == "Initializing")
        return "OK";
    return state == "Degraded"  ? "PredictiveFailureAnalysis"
           : state == "Failed"  ? "Fail"
           : state == "Missing" ? "Miss"
                                : "N/A";
}

std::string sasDriveHealth(const std::string& state) {
    if (state == "Optimal" || state == "Online" || state == "HotSpare" || state == "Ready")
        return "OK";
    if (state == "Missing" || state == "Standby")
        return state;
    return state == "Degraded" ? "PredictiveFailureAnalysis" : state == "Failed" ? "Fail" : "N/A";
}

Item driveItem(Family family, int controller, const Drive& drive, const std::string& state) {
    Item item;
    item.family = family;
    item.key = place(controller, drive);
    item.state = state;
    item.controller = controller;
    item.enclosure = drive.enclosure;
    item.slot = drive.slot;
    return item;
}

void addSas(std::vector<Item>& items, const Controller& controller, int index) {
    const bool ir = controller.kind == Kind::sas_ir;
    items.push_back({format("BRCM_%s_CNTL;%d;%d;SAS3008;8.35.00.00;15.00.00.00;1 Serial Attached "
                            "SCSI;",
                            ir ? "IR" : "II", index, controller.number)});
    for (const Volume& volume : controller.volumes) {
        const bool unknown = volume.level == "Unknown";
        items.push_back({"BRCM_IR_VD;" +
                         join({number(323 - volume.id), format("%d-%d", index, volume.id),
                               sasVolumeHealth(volume.state), volume.state, volume.level,
                               unknown ? "" : hundredths(volume.megabytes),
                               unknown ? "" : members(index, controller, volume)},
                              ";") +
                         ";"});
    }
    int row = 0;
    for (const Drive& drive : controller.drives) {
        if (!drive.there)
            continue;
        const std::string state = without(drive.state, ' ');
        const bool bare = state == "Missing" || state == "Standby";
        Item item = driveItem(ir ? RAID : IT, index, drive, state);
        item.text = (ir ? "BRCM_IR_PD;" : "BRCM_IT_PD;") + number(row++) +
                    ";N/A:" + sasDriveHealth(state) + ":" + state + ":" + drive.serial + ":" +
                    (bare ? "" : drive.firmware) + ";" + item.key + ";" + drive.type.substr(5) +
                    ";N/A;ATA " + (bare ? "" : without(drive.model, ' ')) + ";" +
                    (bare ? "" : hundredths(drive.megabytes)) + ";";
        items.push_back(item);
    }
}

void addMegaraid(std::vector<Item>& items, const Controller& controller) {
    for (const Drive& drive : controller.drives) {
        const Health health = drive.health == Health::warned ? Health::well : drive.health;
        if (drive.there)
            items.push_back({format("LSI;/dev/pass%d:%s:", drive.device_id, healthOf(health)) +
                             drive.serial + ":" + drive.firmware + ":" + number(drive.slot) + ";"});
    }
}

void addCard(std::vector<Item>& items, const Controller& card, int told) {
    items.push_back({"BRCM_IR_CNTL;" + (told == 0 ? "" : number(told)) + ";" + number(card.number) +
                     ";" + underscored(storcliModel(card)) + ";6.22.03.0;4.270_beta;SAS-12G;"});
    for (const Volume& volume : card.volumes) {
        const bool degraded = volume.state == "Dgrd" || volume.state == "Pdgd";
        items.push_back(
            {"BRCM_IR_VD;" +
             join({number(volume.id), volume.name, degraded ? "PredictiveFailureAnalysis" : "OK",
                   volume.state, volume.level, number(volume.megabytes) + ".0",
                   members(card.number, card, volume)},
                  ";") +
             ";"});
    }
    int row = 0;
    for (const Drive& drive : card.drives) {
        if (!drive.there)
            continue;
        Item item = driveItem(RAID, card.number, drive, drive.state);
        const bool bad = drive.state == "UBad" || drive.state == "UBUnsp";
        item.text = "BRCM_IR_PD;" + number(row++) + ";" + drive.wwn + (bad ? ":Fail:" : ":OK:") +
                    drive.state + ":" + drive.serial + ":" + drive.firmware + ";" + item.key + ";" +
                    drive.type + ";N/A;" + underscored(drive.model) + ";" +
                    format("%lld.%02lld;", static_cast<long long>(drive.megabytes / 1024),
                           static_cast<long long>(drive.megabytes % 100));
        items.push_back(item);
    }
}

std::vector<Item> filledItems(std::vector<Item> items) {
    for (Item& item : items)
        item.text = filled(item.text, ";:");
    return items;
}

} // namespace

std::vector<Item> storageItems(const World& world, bool all) {
    std::vector<Item> items;
    const auto each = [&](auto wanted, auto add) {
        for (const Controller& controller : world.controllers)
            if (controller.there && (controller.isSas() ? world.has_sas3ircu : world.has_storcli) &&
                wanted(controller)) {
                const std::size_t before = items.size();
                add(controller);
                const bool sas = controller.isSas();
                for (std::size_t i = before; i < items.size(); i++)
                    items[i].listed_by = {sas ? "sas3ircu list" : "storcli show",
                                          format(controller.kind == Kind::megaraid
                                                     ? "storcli /c%d /eall /sall show"
                                                 : sas ? "sas3ircu %d display"
                                                       : "storcli /c%d show",
                                                 controller.number)};
            }
    };
    int index = 0, cards = 0;
    each([](const Controller& one) { return one.kind == Kind::megaraid; },
         [&](const Controller& one) { addMegaraid(items, one); });
    each([](const Controller& one) { return one.isSas(); },
         [&](const Controller& one) { addSas(items, one, index++); });
    for (const Disk& disk : world.disks) {
        if (!disk.there || !disk.ata)
            continue;
        items.push_back(diskItem(world, disk));
        const auto by = items.back().listed_by;
        std::vector<Partition> sorted = disk.partitions;
        std::sort(sorted.begin(), sorted.end(),
                  [](const Partition& a, const Partition& b) { return a.name < b.name; });
        for (const Partition& one : sorted) {
            items.push_back(partitionItem(one));
            items.back().listed_by = by;
        }
    }
    if (!all)
        items.resize(std::min(items.size(), LINES_MOST));
    const std::size_t most = all ? SIZE_MAX : std::max(LINES_MOST, items.size() + 1);
    if (world.cards_enabled && (all || !items.empty()))
        each([](const Controller& one) { return one.kind == Kind::card; },
             [&](const Controller& one) { addCard(items, one, cards++); });
    items.resize(std::min(items.size(), most));
    return filledItems(items);
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
        items.push_back({"Logical;" +
                         join({volume.provider, volume.state, "Intel RSTe",
                               number(static_cast<std::int64_t>(volume.members.size())),
                               number(volume.level), join(indexes, ":"), number(place)},
                              ";") +
                         ";"});
        for (const auto& [name, disk] : disks) {
            const int index = indexOf(world, *disk);
            Item item = onboardItem(world, *disk, "", index < 0 ? -1 : place * 16 + index);
            item.listed_by = {"graid list"};
            items.push_back(item);
        }
        ++place;
    }
    return filledItems(items);
}

// ---- NVMe

namespace {

std::string counterAt(const std::array<std::uint8_t, 512>& health, std::size_t at) {
    std::uint64_t low = 0, high = 0;
    for (std::size_t i = 8; i > 0; i--) {
        low = low << 8 | health.at(at + i - 1);
        high = high << 8 | health.at(at + 8 + i - 1);
    }
    const std::uint64_t most = INT64_MAX;
    return std::to_string(high != 0 || low > most ? most : low);
}

} // namespace

std::vector<std::string> nvmeRecords(const World& world) {
    std::map<std::string, std::string> records; // by name, as a folder lists them
    for (const Nvme& nvme : world.nvmes) {
        if (!nvme.there)
            continue;
        const auto& health = nvme.health;
        const auto kelvin = static_cast<float>(health[1] + health[2] * 256);
        const std::string name = format("nvme%d", nvme.number);
        std::vector<std::string> fields = {name,
                                           number(health[0]),
                                           format("%2.2f C", static_cast<double>(kelvin - 273.15F)),
                                           number(health[3]) + "%",
                                           number(health[4]) + "%",
                                           number(health[5]) + "%"};
        for (std::size_t at = 32; at <= 176; at += 16)
            fields.push_back(counterAt(health, at));
        fields.push_back(nvme.model.substr(0, nvme.model.find_last_not_of(' ') + 1).substr(0, 31));
        fields.push_back(number(static_cast<std::int64_t>(nvme.blocks << nvme.block_bits >> 10)));
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
