// What parsers read out of a text, in words. The fields of records hold no ";", ":" or newline, and
// neither do these words.
#pragma once

#include "storage/drive_index.h"
#include "storage/raid_card.h"
#include "storage/smart_health.h"
#include "text.h"
#include "tools/camcontrol.h"
#include "tools/graid.h"
#include "tools/lspci.h"
#include "tools/sas3ircu.h"
#include "tools/swapinfo.h"

namespace readings {

using text_view = std::string_view;

inline std::string row(std::initializer_list<text_view> values) {
    std::string told;
    for (const text_view value : values)
        told.append(value).append(",");
    told.back() = '|';
    return told;
}

template <class Number>
std::string shown(const std::optional<Number>& number) {
    return number.has_value() ? std::to_string(*number) : "-";
}

inline std::string smartctl(text_view text) {
    const smart_facts told = parseSmartctl(text);
    return row(
        {smartHealth(told, true), told.serial, told.firmware, told.rotation, told.temperature});
}

inline std::string devlist(text_view text) {
    std::string told;
    for (const cam_device& device : parseDevlist(text)) {
        told += row({device.bus});
        for (const std::string& word : device.words)
            told += word + " ";
    }
    return told;
}

inline std::string lspci(text_view text) {
    const disk_controllers told = parseLspci(text);
    return row({told.usb, told.ata});
}

// What df tells of the device on the first line.
inline std::string df(text_view text) {
    text_view device;
    nextLine(text, device);
    const space_table table = parseSpaceTable(text);
    const auto use = useOf(table, device);
    const std::string told = isSwap(table, device) ? "swap " : "";
    return !use.has_value() ? told
                            : told + row({std::to_string(use->total), std::to_string(use->used),
                                          std::to_string(use->available)});
}

// The slot of the serial on the first line.
inline std::string driveMap(text_view text) {
    text_view serial;
    nextLine(text, serial);
    return parseDriveMap(text, serial);
}

inline std::string controllerCount(text_view text) {
    const storcli_listing told = parseStorcliShow(text);
    return told.told ? std::to_string(told.count) : "-";
}

// The cards that a configuration selects.
inline std::string cards(text_view configuration) {
    const storcli_listing listing = parseStorcliShow(
        "  0 Northwind RAID 4000   8\n 12 northwind (x)\nraid 5\n 12 again RAID\n");
    std::string told;
    for (const std::string& card : selectCards(listing, parseCardPattern(configuration)))
        told += card + " ";
    return told;
}

inline std::string drives(const std::vector<storcli_drive>& drives) {
    std::string told;
    for (const storcli_drive& drive : drives)
        told += row({drive.enclosure, drive.slot, drive.in_enclosure ? "in" : "",
                     bare(drive.device_id), drive.state, drive.size, drive.medium});
    return told;
}
inline std::string storcliDrives(text_view text) {
    return drives(parseStorcliDrives(text));
}

inline std::string storcliCard(text_view text) {
    const storcli_card told = parseStorcliCard(text);
    std::string volumes;
    for (const storcli_volume& volume : told.volumes)
        volumes += row({volume.number, volume.level, volume.state, volume.size});
    return row({told.product, told.firmware, told.bios, told.interface}) + volumes +
           drives(told.drives) + (told.whole ? "whole" : "");
}

inline std::string storcliVolumes(text_view text) {
    std::string told;
    for (const auto& [number, facts] : parseStorcliVolumes(text))
        told += row({bare(number), facts.os_name}) + drives(facts.members);
    return told;
}

inline std::string storcliFacts(text_view text) {
    std::string told;
    for (const auto& [place, facts] : parseStorcliDriveFacts(text))
        told += row({bare(before(place, ":")), bare(behind(place, ":")), facts.serial, facts.wwn,
                     facts.firmware, facts.model});
    return told;
}

inline std::string sasList(text_view text) {
    const sas3ircu_listing listing = parseSas3ircuList(text);
    std::string told = listing.told ? "told" : "";
    for (const std::string& number : listing.sas3008)
        told += " " + number;
    return told;
}

inline std::string sasDisplay(text_view text) {
    const sas_display display = parseSas3ircuDisplay(text);
    std::string told =
        row({display.type, display.bios, display.firmware, display.raid_support, display.channel});
    for (const sas_volume& volume : display.volumes) {
        told += row({volume.id, volume.status, volume.level, shown(volume.size)});
        for (const sas_place& place : volume.members)
            told += row({place.enclosure, place.slot});
    }
    for (const sas_drive& drive : display.drives)
        told += row({drive.place.enclosure, drive.place.slot, drive.state, shown(drive.size),
                     drive.manufacturer, drive.model, drive.firmware, drive.serial, drive.type});
    return told + (display.whole ? "whole" : "");
}

inline std::string graid(text_view text) {
    std::string told;
    for (const graid_volume& volume : parseGraidList(text)) {
        told += row({volume.name, volume.state, volume.components, volume.level});
        for (const std::string& member : volume.members)
            told += member + " ";
    }
    return told;
}

} // namespace readings
