// "geom disk list": the disks of the host.
#pragma once

#include "tools/program.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct geom_disk {
    std::string name;
    std::optional<std::uint64_t> bytes; // size of the medium
};

command_line geomDiskList();

// Every disk once, in the order of first appearance.
std::vector<geom_disk> parseGeomDisks(std::string_view text);
