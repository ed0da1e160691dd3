#include "tools/fdisk.h"

#include "text.h"

namespace {

void takeFirst(std::optional<std::uint64_t>& value, std::string_view line, const char* mark) {
    if (!value.has_value())
        value = wholeNumber(digitsBehind(line, mark));
}

} // namespace

command_line fdiskDisk(const std::string& disk) {
    return {"fdisk", disk};
}

disk_geometry parseFdisk(std::string_view text) {
    disk_geometry geometry;
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        takeFirst(geometry.cylinders, line, "cylinders=");
        takeFirst(geometry.heads, line, "heads=");
        takeFirst(geometry.track_sectors, line, "sectors/track=");
    }
    return geometry;
}
