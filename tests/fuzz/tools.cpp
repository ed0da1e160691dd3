// What programs and files tell the agent. The first byte chooses the reader, counted from 'A' in
// the order of the table; the rest is its text.
#include "fuzz/fuzz_bytes.h"
#include "host/lan_record.h"
#include "host/media_speed.h"
#include "storage/drive_index.h"
#include "storage/raid_card.h"
#include "storage/smart_health.h"
#include "text.h"
#include "tools/camcontrol.h"
#include "tools/fdisk.h"
#include "tools/geom.h"
#include "tools/gpart.h"
#include "tools/graid.h"
#include "tools/ifconfig.h"
#include "tools/lspci.h"
#include "tools/netstat.h"
#include "tools/newfs.h"
#include "tools/one_line.h"
#include "tools/pciconf.h"
#include "tools/ps.h"
#include "tools/resolv_conf.h"
#include "tools/sas3ircu.h"
#include "tools/swapinfo.h"

#include <set>

using text_view = std::string_view;

// Values of a line that hold none of these marks.
template <class... Text>
static void requireWithout(text_view marks, const Text&... values) {
    for (const text_view value : {text_view(values)...})
        require(value.size() <= LINE_MOST && value.find_first_of(marks) == value.npos);
}
template <class... Text>
static void requireFields(const Text&... values) {
    requireWithout(";:\n", values...);
}

static void requireDrives(const std::vector<storcli_drive>& drives) {
    for (const storcli_drive& drive : drives)
        requireFields(drive.enclosure, drive.slot, drive.state, drive.size, drive.medium);
}
static void requireDistinct(const std::vector<std::string>& values) {
    require(std::set<text_view>(values.begin(), values.end()).size() == values.size());
}

// Takes off the first line, which tells what is asked of the rest.
static text_view firstLine(text_view& text) {
    text_view line;
    nextLine(text, line);
    return line;
}

static void readLanRecord(text_view text) {
    lan_fields fields;
    for (const lan_field from_outside :
         {LAN_NAME, LAN_IPV6, LAN_GATEWAY, LAN_HOST, LAN_DNS, LAN_DESCRIPTION})
        fields[from_outside] = firstLine(text);
    std::string record = lanRecord(fields);
    replaceEmptyToNAExceptDoubleColon(record);
    require(record.size() < RECORD_SIZE && record.back() == ';');
    require(std::count(record.begin(), record.end(), ';') == LAN_FIELDS);
}

static void readCard(text_view text) {
    const storcli_card card = parseStorcliCard(text);
    requireFields(card.interface, card.bios, card.firmware, card.product);
    for (const storcli_volume& volume : card.volumes)
        requireFields(volume.number, volume.level, volume.state, volume.size);
    requireDrives(card.drives);
}

static void readDisplay(text_view text) {
    const sas_display told = parseSas3ircuDisplay(text);
    requireFields(told.type, told.bios, told.firmware, told.raid_support, told.channel);
    for (const sas_volume& volume : told.volumes) {
        requireFields(volume.id, volume.status, volume.level);
        for (const sas_place& place : volume.members)
            requireFields(place.enclosure, place.slot);
    }
    for (const sas_drive& drive : told.drives)
        requireFields(drive.place.enclosure, drive.place.slot, drive.state, drive.manufacturer,
                      drive.model, drive.firmware, drive.serial, drive.type);
}

static constexpr void (*READERS[])(text_view text) = {
    [](text_view text) { require(parseOneLine(text).size() <= 255); }, // A
    [](text_view text) {                                               // B
        for (const auto& [name, interface] : parseIfconfig(text)) {
            require(interface.inet6.size() <= 128 && linkSpeed(interface.media) >= 0);
            requireWithout(" \t\n", interface.status);
        }
    },
    [](text_view text) { // C
        for (const listed_route& route : parseNetstat(text))
            requireWithout(" \t\n", route.destination, route.gateway, route.interface);
    },
    [](text_view text) { // D
        for (const auto& [name, device] : parsePciconf(text))
            requireWithout("'\n", device.vendor, device.device);
    },
    [](text_view text) { // E
        for (const std::string& server : parseResolvConf(text))
            requireWithout(" \t\r\n", server);
    },
    [](text_view text) { // F
        for (const listed_process& process : parsePs(text))
            requireWithout("\n", process.command, process.listing);
    },
    readLanRecord,       // G
    [](text_view text) { // H
        std::string record(text);
        replaceEmptyToNA(record);
        require(record.size() < RECORD_SIZE);
        for (std::string& field : splitFields(record, ";:", 18))
            requireFields(trim(field), std::to_string(leadingInteger(field, 0)));
    },
    [](text_view text) { // I
        std::vector<std::string> names;
        for (const geom_disk& disk : parseGeomDisks(text))
            names.push_back(disk.name);
        requireDistinct(names);
    },
    [](text_view text) { // J
        for (const cam_device& device : parseDevlist(text))
            for (const std::string& word : device.words)
                requireWithout("<>(), \n", device.bus, word);
    },
    [](text_view text) { requireFields(parseIdentify(text).model); }, // K
    [](text_view text) { parseFdisk(text); },                         // L
    [](text_view text) { parseGpart(text); },                         // M
    [](text_view text) {                                              // N: a device, then the table
        const text_view device = firstLine(text);
        const space_table table = parseSpaceTable(text);
        const auto use = useOf(table, device);
        require(!use.has_value() || use->total % 1024 == 0);
        isSwap(table, device);
    },
    [](text_view text) { parseNewfs(text); }, // O
    [](text_view text) {                      // P
        const disk_controllers told = parseLspci(text);
        requireFields(told.usb, told.ata);
    },
    [](text_view text) { // Q
        for (const bool drop_warning : {false, true}) {
            const smart_facts told = parseSmartctl(text, drop_warning);
            requireFields(told.serial, told.firmware, told.rotation, told.temperature,
                          smartHealth(told, drop_warning));
        }
    },
    [](text_view text) { // R: a serial, then the drive map
        const text_view serial = firstLine(text);
        requireFields(parseDriveMap(text, serial));
    },
    [](text_view text) { requireDrives(parseStorcliDrives(text)); }, // S
    readCard,                                                        // T
    [](text_view text) {                                             // U
        for (const auto& [number, facts] : parseStorcliVolumes(text)) {
            requireFields(facts.os_name);
            requireDrives(facts.members);
        }
    },
    [](text_view text) { // V
        for (const auto& [place, facts] : parseStorcliDriveFacts(text))
            requireFields(facts.serial, facts.model, facts.wwn, facts.firmware);
    },
    [](text_view text) { // W: the setting of the cards, then what storcli shows
        const std::string pattern = parseCardPattern(firstLine(text));
        requireWithout(";\t\r\n", pattern);
        requireDistinct(selectCards(parseStorcliShow(text), pattern));
    },
    [](text_view text) { requireDistinct(parseSas3ircuList(text).sas3008); }, // X
    readDisplay,                                                              // Y
    [](text_view text) {                                                      // Z
        for (const graid_volume& volume : parseGraidList(text)) {
            requireFields(volume.name, volume.state, volume.components, volume.level);
            for (const std::string& disk : volume.members)
                requireFields(disk);
        }
    },
};

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0)
        READERS[static_cast<std::uint8_t>(*data - 'A') % std::size(READERS)](
            {reinterpret_cast<const char*>(data) + 1, size - 1});
    return 0;
}
