#include "tools/graid.h"

#include "text.h"

#include <set>

namespace {

// A geom in the making. Its own name and state come first, then those of its first provider.
class geom_reader {
  public:
    void take(std::string_view line) {
        if (labelled(line, "consumers").has_value())
            m_consumers = true;
        if (holdsText(line, "name") && ++m_names == 2)
            m_volume.name = bare(wordOf(line, 2));
        if (line.find("State") != line.npos && ++m_states == 2)
            m_volume.state = bare(wordOf(line, 1));
        if (const auto told = labelled(line, "components"); told && m_volume.components.empty())
            m_volume.components = solid(*told);
        if (const auto told = labelled(line, "raidlevel"); told && m_volume.level.empty())
            takeLevel(solid(*told));
        if (isEntry(line))
            takeEntry(wordOf(line, 2));
    }

    // Disks are consumers; in a listing without these, what follows the first provider.
    graid_volume volume() {
        if (!m_consumers && !m_entries.empty())
            m_entries.erase(m_entries.begin());
        for (std::string& disk : m_consumers ? m_disks : m_entries)
            if (!disk.empty())
                m_volume.members.push_back(std::move(disk));
        return std::move(m_volume);
    }

  private:
    // "1. Name: ada0"
    static bool isEntry(std::string_view line) {
        const std::string_view text = trimmed(line);
        const std::size_t digits = text.find_first_not_of("0123456789");
        return digits > 0 && digits != text.npos && text.substr(digits, 7) == ". Name:";
    }
    void takeEntry(std::string_view name) {
        (m_consumers ? m_disks : m_entries).push_back(bare(name.substr(name.rfind('/') + 1)));
    }
    void takeLevel(std::string level) {
        constexpr std::string_view WORD = "RAID";
        if (const std::size_t at = level.find(WORD); at != level.npos)
            level.erase(at, WORD.size());
        m_volume.level = std::move(level);
    }

    graid_volume m_volume;
    int m_names = 0;
    int m_states = 0;
    bool m_consumers = false;           // their section has begun
    std::vector<std::string> m_entries; // before the consumers
    std::vector<std::string> m_disks;   // consumers
};

} // namespace

command_line graidList() {
    return {"graid", "list"};
}

std::vector<graid_volume> parseGraidList(std::string_view text) {
    std::vector<geom_reader> geoms;
    std::set<std::string_view> names;
    bool inside = false;
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        if (labelled(line, "geom name").has_value()) {
            const std::string_view name = wordOf(line, 2);
            inside = !name.empty() && names.insert(name).second;
            if (inside)
                geoms.emplace_back();
        }
        if (inside)
            geoms.back().take(line);
    }
    std::vector<graid_volume> volumes;
    volumes.reserve(geoms.size());
    for (geom_reader& geom : geoms)
        volumes.push_back(geom.volume());
    return volumes;
}
