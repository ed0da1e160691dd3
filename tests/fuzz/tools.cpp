// What programs and files tell the agent: every reader gets every text. The recorded hosts are
// where it starts from.
#include "fuzz/fuzz_bytes.h"
#include "host/lan_record.h"
#include "host/media_speed.h"
#include "tools/fdisk.h"
#include "tools/geom.h"
#include "tools/gpart.h"
#include "tools/ifconfig.h"
#include "tools/netstat.h"
#include "tools/newfs.h"
#include "tools/one_line.h"
#include "tools/pciconf.h"
#include "tools/ps.h"
#include "tools/readings.h"
#include "tools/resolv_conf.h"

using text_view = std::string_view;

static void requireWithout(text_view marks, std::initializer_list<text_view> values) {
    for (const text_view value : values)
        require(value.size() <= LINE_MOST && value.find_first_of(marks) == value.npos);
}

static constexpr std::string (*READINGS[])(text_view text) = {
    readings::smartctl, readings::devlist,         readings::lspci,         readings::df,
    readings::driveMap, readings::controllerCount, readings::storcliDrives, readings::storcliCard,
    readings::cards,    readings::storcliVolumes,  readings::storcliFacts,  readings::sasList,
    readings::graid,    readings::sasDisplay,
};

static void readNetwork(text_view text) {
    require(parseOneLine(text).size() <= 255);
    for (const auto& [name, interface] : parseIfconfig(text)) {
        require(interface.inet6.size() <= 128 && linkSpeed(interface.media) >= 0);
        requireWithout(" \t\n", {interface.status});
    }
    for (const listed_route& route : parseNetstat(text))
        requireWithout(" \t\n", {route.destination, route.gateway, route.interface});
    for (const auto& [name, device] : parsePciconf(text))
        requireWithout("'\n", {device.vendor, device.device});
    for (const std::string& server : parseResolvConf(text))
        requireWithout(" \t\r\n", {server});
}

// A record whose fields are the first lines.
static void readLanRecord(text_view text) {
    lan_fields fields;
    for (const lan_field from_outside :
         {LAN_NAME, LAN_IPV6, LAN_GATEWAY, LAN_HOST, LAN_DNS, LAN_DESCRIPTION}) {
        text_view line;
        nextLine(text, line);
        fields[from_outside] = line;
    }
    std::string record = lanRecord(fields);
    replaceEmptyToNAExceptDoubleColon(record);
    require(record.size() < RECORD_SIZE && record.back() == ';');
    require(std::count(record.begin(), record.end(), ';') == LAN_FIELDS);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const text_view text(reinterpret_cast<const char*>(data), size);
    for (const auto reading : READINGS)
        require(reading(text).find_first_of(";:\n") == std::string::npos);
    readNetwork(text);
    readLanRecord(text);
    for (const listed_process& process : parsePs(text))
        requireWithout("\n", {process.command, process.listing});
    for (const geom_disk& disk : parseGeomDisks(text))
        requireWithout(" \t\n", {disk.name});
    requireWithout(";:\n", {parseIdentify(text).model});
    parseFdisk(text);
    parseGpart(text);
    parseNewfs(text);
    return 0;
}
