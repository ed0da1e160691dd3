// "fdisk DISK": the geometry that the disk's label tells.
#pragma once

#include "tools/program.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct disk_geometry {
    std::optional<std::uint64_t> cylinders;
    std::optional<std::uint64_t> heads;
    std::optional<std::uint64_t> track_sectors;
};

command_line fdiskDisk(const std::string& disk);
disk_geometry parseFdisk(std::string_view text);
