// Where an onboard drive sits.
#pragma once

#include "storage/smart_health.h"

#include <optional>
#include <string>
#include <string_view>

// The slot of the drive map's line of that serial number; a line that merely contains it counts
// when no line is the drive's own. Empty when the map tells nothing.
std::string parseDriveMap(std::string_view text, std::string_view serial);

// The slot of the drive map file's line of that serial number; a line that merely contains it
// counts when no line is the drive's own. Empty when the file can't be read or tells nothing.
std::string mapIndex(std::string_view serial);
bool mapReadable();

// The number of the bus (scbus) on which camcontrol lists the disk; empty when it lists none,
// nothing when it lists no disk at all.
std::optional<std::string> busIndex(const std::string& disk, const char* label);

// What is remembered of where a disk sits. What can't be read for once does not move it.
struct place_memory {
    std::string serial;
    std::string mapped; // by the drive map
    std::string bus;
    int unread = 0; // passes in which nothing told the serial number
};
struct disk_place {
    std::string index;
    bool known = false; // false: the disk may sit elsewhere
};

// Where a disk sits: by the drive map and its serial number, else by its bus.
disk_place placeOf(const std::string& disk, const smart_reply& smart, place_memory& memory,
                   const char* label);
