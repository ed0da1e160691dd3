// graid: the software RAID volumes of the host.
#pragma once

#include "tools/program.h"

#include <string>
#include <string_view>
#include <vector>

// What "graid list" tells of a geom. Of several volumes in one geom only the first counts. Values
// are without ";" and ":", and empty where the listing has none.
struct graid_volume {
    std::string name;       // of its first provider, "raid/r0"; without one that of its first disk
    std::string state;      // of that provider
    std::string components; // number of its members
    std::string level;      // without "RAID": "1"
    std::vector<std::string> members; // disks, in the order of the listing
};

command_line graidList();
std::vector<graid_volume> parseGraidList(std::string_view text);
