#include "tools/sas3ircu.h"

#include "text.h"

#include <map>
#include <set>

command_line sas3ircuList() {
    return {"sas3ircu", "list"};
}

command_line sas3ircuDisplay(const std::string& controller) {
    return {"sas3ircu", controller, "display"};
}

sas3ircu_listing parseSas3ircuList(std::string_view text) {
    sas3ircu_listing listing;
    std::set<std::string_view> found;
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        const std::string_view number = wordOf(line, 0);
        const std::string_view type = wordOf(line, 1);
        if (number == "Index" && type == "Type")
            listing.told = true;
        if (wholeNumber(number).has_value() && type.find("3008") != type.npos &&
            found.insert(number).second)
            listing.sas3008.emplace_back(number);
    }
    listing.told = listing.told || !found.empty();
    return listing;
}

namespace {

enum class section { preamble, controller, volumes, drives, end };

constexpr struct {
    std::string_view title;
    section begins;
} SECTIONS[] = {
    {"controller information", section::controller},
    {"ir volume information", section::volumes},
    {"physical device information", section::drives},
    {"enclosure information", section::end},
};

// The section that a line begins.
std::optional<section> sectionAt(std::string_view line) {
    for (const auto& [title, begins] : SECTIONS)
        if (sameText(trimmed(line), title))
            return begins;
    return std::nullopt;
}

constexpr struct {
    std::string_view label;
    std::string sas_display::*value;
} CONTROLLER_VALUES[] = {
    {"controller type", &sas_display::type},
    {"bios version", &sas_display::bios},
    {"firmware version", &sas_display::firmware},
    {"raid support", &sas_display::raid_support},
};

constexpr struct {
    std::string_view label;
    std::string sas_volume::*value;
} VOLUME_VALUES[] = {
    {"volume id", &sas_volume::id},
    {"status of volume", &sas_volume::status},
    {"raid level", &sas_volume::level},
};

bool startsWith(std::string_view text, std::string_view start) {
    return sameText(text.substr(0, start.size()), start);
}

// What a "label : value" line says of a label that may stand behind another word, as in
// "PHY[0] Enclosure#/Slot# : 1:0".
std::optional<std::string_view> labelledAtEnd(std::string_view line, std::string_view label) {
    std::string_view rest = line;
    nextWord(rest);
    const auto value = labelled(line, label);
    return value.has_value() ? value : labelled(rest, label);
}

// The volumes of a display in the making. Their members are kept by the number in the title above
// them, which one volume each takes for its own.
class volume_reader {
  public:
    void take(std::string_view line) {
        constexpr std::string_view TITLE = "ir volume ";
        const std::string_view text = trimmed(line);
        if (startsWith(text, TITLE))
            if (const auto number = wholeNumber(text.substr(TITLE.size())); number.has_value())
                m_title = number;
        if (const auto place = labelledAtEnd(line, "enclosure#/slot#"); place.has_value())
            m_members[m_title].push_back(
                {solid(place->substr(0, place->find(':'))), solid(behind(*place, ":"))});
        if (labelled(line, "volume id").has_value()) {
            m_volumes.emplace_back();
            m_titles.push_back(m_title);
        }
        if (!m_volumes.empty())
            takeValue(m_volumes.back(), line);
    }

    std::vector<sas_volume> volumes() {
        m_members.erase(std::nullopt);
        for (std::size_t i = 0; i < m_volumes.size(); ++i)
            std::swap(m_volumes[i].members, m_members[m_titles[i]]);
        return std::move(m_volumes);
    }

  private:
    static void takeValue(sas_volume& volume, std::string_view line) {
        for (const auto& [label, value] : VOLUME_VALUES)
            if (const auto told = labelled(line, label); told.has_value())
                volume.*value = solid(*told);
        if (const auto told = labelled(line, "size (in mb)"); told.has_value())
            volume.size = wholeNumber(*told);
    }

    using volume_title = std::optional<std::uint64_t>;
    volume_title m_title;
    std::map<volume_title, std::vector<sas_place>> m_members;
    std::vector<sas_volume> m_volumes;
    std::vector<volume_title> m_titles; // by volume
};

// The drives of a display in the making. A device begins at its title or, without one, at its
// enclosure; of its lines with one label the first counts.
class drive_reader {
  public:
    void take(std::string_view line) {
        const std::string_view title = trimmed(line);
        if (startsWith(title, "device is a ") || startsWith(title, "device is an ")) {
            finish();
            m_titled = true;
            m_is_enclosure = holdsText(title, "enclosure services");
            return;
        }
        for (std::size_t i = 0; i < VALUES; ++i)
            if (const auto told = labelled(line, LABELS[i]); told.has_value())
                takeValue(i, *told);
    }

    std::vector<sas_drive> drives() {
        finish();
        return std::move(m_drives);
    }
    // Whether every device told its place and its state.
    bool isWhole() const {
        return m_whole;
    }

  private:
    enum value {
        enclosure,
        slot,
        state,
        size,
        manufacturer,
        model,
        firmware,
        serial,
        type,
        VALUES
    };
    static constexpr std::string_view LABELS[VALUES] = {"enclosure#",
                                                        "slot#",
                                                        "state",
                                                        "size (in mb)/(in sectors)",
                                                        "manufacturer",
                                                        "model number",
                                                        "firmware revision",
                                                        "serial no",
                                                        "drive type"};

    void takeValue(std::size_t which, std::string_view told) {
        if (which == enclosure && (m_told[enclosure].has_value() || !m_titled)) {
            finish();
            m_titled = true;
        }
        if (m_told[which].has_value())
            return;
        m_told[which] =
            which == size ? std::string(trimmed(told.substr(0, told.find('/')))) : solid(told);
    }

    void finish() {
        const auto told = [this](value which) { return m_told[which].value_or(""); };
        m_whole = m_whole && (!m_titled || m_is_enclosure ||
                              (m_told[enclosure].has_value() && m_told[slot].has_value() &&
                               m_told[state].has_value()));
        if (!told(slot).empty() && !m_is_enclosure) // half a display may end within a drive
            m_drives.push_back({{told(enclosure), told(slot)},
                                told(state),
                                wholeNumber(told(size)),
                                told(manufacturer),
                                told(model),
                                told(firmware),
                                told(serial),
                                told(type)});
        for (auto& one : m_told)
            one.reset();
        m_titled = m_is_enclosure = false;
    }

    std::vector<sas_drive> m_drives;
    std::optional<std::string> m_told[VALUES];
    bool m_titled = false;
    bool m_is_enclosure = false;
    bool m_whole = true;
};

void takeControllerLine(sas_display& display, std::string_view line) {
    for (const auto& [label, value] : CONTROLLER_VALUES)
        if (const auto told = labelled(line, label); told.has_value())
            display.*value = solid(*told);
    if (const auto told = labelled(line, "channel description"); told.has_value())
        display.channel = bare(*told);
}

} // namespace

sas_display parseSas3ircuDisplay(std::string_view text) {
    sas_display display;
    volume_reader volumes;
    drive_reader drives;
    section current = section::preamble;
    bool drives_told = false;
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        if (const auto begun = sectionAt(line); begun.has_value()) {
            current = *begun;
            drives_told = drives_told || current == section::drives;
        } else if (current == section::controller) {
            takeControllerLine(display, line);
        } else if (current == section::volumes) {
            volumes.take(line);
        } else if (current == section::drives) {
            drives.take(line);
        }
    }
    display.volumes = volumes.volumes();
    display.drives = drives.drives();
    display.whole = drives_told && drives.isWhole() && current == section::end &&
                    (display.raid_support == "Yes" || display.raid_support == "No");
    return display;
}
