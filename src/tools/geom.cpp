#include "tools/geom.h"

#include "text.h"

#include <map>

command_line geomDiskList() {
    return {"geom", "disk", "list"};
}

std::vector<geom_disk> parseGeomDisks(std::string_view text) {
    std::vector<geom_disk> disks;
    std::map<std::string_view, std::size_t> places;
    geom_disk unnamed;
    geom_disk* disk = &unnamed;
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        if (const auto told = labelled(line, "Geom name"); told.has_value()) {
            const std::string_view name = wordOf(*told, 0);
            if (name.empty())
                continue;
            const auto [place, is_new] = places.emplace(name, disks.size());
            if (is_new)
                disks.push_back({std::string(name), std::nullopt});
            disk = &disks[place->second];
        } else if (const auto size = labelled(line, "Mediasize");
                   size.has_value() && !disk->bytes.has_value()) {
            disk->bytes = wholeNumber(wordOf(*size, 0));
        }
    }
    return disks;
}
