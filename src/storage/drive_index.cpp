#include "storage/drive_index.h"

#include "config/logs.h"
#include "system_info.h"
#include "text.h"
#include "tools/ask.h"
#include "tools/camcontrol.h"

#include <algorithm>

namespace {

// So many passes a serial number is waited for. Then the disk is one of those that never tell it,
// and none of the drive map.
constexpr int UNREAD_PASSES = 60;

// The field behind the first `mark`.
std::string fieldBehind(std::string_view line, std::string_view mark) {
    const std::string_view rest = behind(line, mark);
    return std::string(trimmed(rest.substr(0, rest.find(','))));
}

} // namespace

std::string parseDriveMap(std::string_view text, std::string_view told) {
    std::string own, other, serial(told);
    if (trim(serial).empty())
        return own;
    const std::string start = serial + ",";
    for (std::string_view part, rest = text; own.empty() && nextLine(rest, part);) {
        if (sameText(before(part, ","), "hdd count"))
            continue;
        // As serials are read: without what separates fields, and without control bytes.
        std::string line;
        std::copy_if(part.begin(), part.end(), std::back_inserter(line), [](char c) {
            const auto byte = static_cast<unsigned char>(c);
            return c != ';' && c != ':' && (c == '\t' || (byte >= 0x20 && byte != 0x7F));
        });
        trim(line);
        if (before(line, ",") == serial)
            own = fieldBehind(line, ",");
        else if (line.compare(0, start.size(), start) == 0)
            own = fieldBehind(line, start);
        if (other.empty() && line.find(serial) != line.npos)
            other = fieldBehind(line, ",");
    }
    return own.empty() ? other : own;
}

std::string mapIndex(std::string_view serial) {
    return parseDriveMap(tools.read_file(hdd_file).value_or(""), serial);
}

bool mapReadable() {
    return tools.read_file(hdd_file).has_value();
}

std::optional<std::string> busIndex(const std::string& disk, const char* label) {
    const reply& answer = ask({camcontrolDevlist(), label});
    if (answer.end != program_end::exited)
        return std::nullopt;
    const std::vector<cam_device> devices = parseDevlist(answer.text);
    const auto sits = [&](const cam_device& device) { return !device.bus.empty(); };
    for (const cam_device& device : devices)
        if (sits(device) &&
            std::find(device.words.begin(), device.words.end(), disk) != device.words.end())
            return device.bus;
    // Silence tells that nobody knows only where it was all that the first pass got, and since.
    const bool lists = std::any_of(devices.begin(), devices.end(), sits);
    static bool silent = static_first_init == 1;
    silent = silent && trimmed(answer.text).empty();
    const bool listed = answer.succeeded() && (lists || silent);
    return listed ? std::optional(std::string()) : std::nullopt;
}

disk_place placeOf(const std::string& disk, const smart_reply& smart, place_memory& memory,
                   const char* label) {
    static bool map_seen = false;
    const bool map_readable = mapReadable();
    map_seen = map_seen || map_readable;
    const std::string& serial = smart.facts.serial;
    if (!serial.empty() && serial != memory.serial)
        memory = {serial, "", memory.bus, 0}; // another disk
    if (std::string mapped = mapIndex(memory.serial); !mapped.empty())
        memory.mapped = std::move(mapped);
    if (!memory.mapped.empty())
        return {memory.mapped, smart.known};
    const bool never_read = memory.unread >= UNREAD_PASSES;
    if (memory.serial.empty() && !smart.known && !never_read)
        ++memory.unread;
    if (map_seen && (!map_readable || (memory.serial.empty() && !smart.known && !never_read)))
        return {};
    const auto bus = busIndex(disk, label);
    if (bus.has_value() && !bus->empty())
        memory.bus = *bus;
    return {memory.bus,
            (smart.known || never_read || !map_seen) && (bus.has_value() || !memory.bus.empty())};
}
