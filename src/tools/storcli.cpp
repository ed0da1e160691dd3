#include "tools/storcli.h"

#include "text.h"

#include <algorithm>
#include <initializer_list>
#include <set>

namespace {

constexpr std::string_view DIGITS = "0123456789";
constexpr std::string_view MEMBERS = "PDs for VD"; // title of a volume's members, its number behind

bool isDigit(std::string_view text, std::size_t at) {
    return at < text.size() && DIGITS.find(text[at]) != DIGITS.npos;
}

// Whether a `mark` has a digit on its right and, with `both`, on its left as well.
bool besideDigits(std::string_view text, char mark, bool both = true) {
    for (std::size_t at = text.find(mark); at != text.npos; at = text.find(mark, at + 1))
        if (isDigit(text, at + 1) && (!both || (at > 0 && isDigit(text, at - 1))))
            return true;
    return false;
}

// What stands before the " :" at the end of a line.
std::optional<std::string_view> titleOf(std::string_view line) {
    line = line.substr(0, line.find_last_not_of(" \t") + 1);
    if (line.size() < 2 || line.substr(line.size() - 2) != " :")
        return std::nullopt;
    return trimmed(line.substr(0, line.size() - 2));
}

enum column { PLACE, VOLUME, DEVICE_ID, STATE, SIZE, MEDIUM, TYPE, COLUMNS };
constexpr std::string_view LABELS[COLUMNS] = {"EID:Slt", "DG/VD", "DID", "State",
                                              "Size",    "Med",   "TYPE"};

// Reads an answer line by line: titles, and the rows of the tables whose columns are known. A table
// is a header between two rules, then rows up to a third.
class table_reader {
  public:
    explicit table_reader(std::string_view text) : m_rest(text) {}

    // The next line that is neither a title nor a rule.
    bool next() {
        while (nextLine(m_rest, m_line)) {
            m_line = m_line.substr(0, m_line.find_last_not_of(" \t") + 1);
            if (!isTitle() && !isRule()) {
                takeHeader();
                return true;
            }
        }
        return false;
    }
    std::string_view line() const {
        return m_line;
    }
    bool isRow() const {
        return m_part == part::rows;
    }
    // What stood before the " :" of the last title.
    std::string_view title() const {
        return m_title;
    }
    // Whether a table below this title was read to its closing rule.
    bool isClosed(std::string_view title) const {
        return m_closed.count(title) != 0;
    }

    // The first word of a row that reaches below the label, empty when there is none.
    std::string cell(column which) const {
        const auto [first, end] = m_columns[which];
        for (std::size_t from = 0, to = 0; first != end; from = to) {
            from = m_line.find_first_not_of(' ', from);
            if (from >= end) // npos as well
                break;
            to = std::min(m_line.find(' ', from), m_line.size());
            if (to > first) {
                std::string word(m_line.substr(from, to - from));
                word.erase(std::remove(word.begin(), word.end(), ';'), word.end());
                return word;
            }
        }
        return "";
    }

  private:
    bool isTitle() {
        const auto title = titleOf(m_line);
        if (!title.has_value())
            return false;
        m_title = *title;
        m_part = part::outside;
        return true;
    }
    bool isRule() {
        if (m_line.size() < 5 || m_line.find_first_not_of('-') != m_line.npos)
            return false;
        if (m_part == part::rows)
            m_closed.insert(m_title);
        m_part = m_part == part::header ? part::rows : part::outside;
        return true;
    }
    void takeHeader() {
        const std::string_view first = wordOf(m_line, 0);
        if (first != LABELS[PLACE] && first != LABELS[VOLUME])
            return;
        m_part = part::header;
        const std::string padded = " " + std::string(m_line) + " ";
        for (std::size_t which = 0; which < COLUMNS; ++which) {
            const std::string_view label = LABELS[which];
            const std::size_t at = padded.find(" " + std::string(label) + " ");
            m_columns[which] = at == padded.npos ? extent{} : extent{at, at + label.size()};
        }
    }

    struct extent {
        std::size_t first = 0;
        std::size_t end = 0;
    };
    enum class part { outside, header, rows };

    std::string_view m_rest;
    std::string_view m_line;
    std::string_view m_title;
    std::set<std::string_view> m_closed;
    part m_part = part::outside;
    extent m_columns[COLUMNS];
};

storcli_drive driveOf(const table_reader& table) {
    const std::string place = table.cell(PLACE);
    storcli_drive drive;
    drive.enclosure = before(place, ":");
    drive.slot = bare(behind(place, ":"));
    drive.in_enclosure = besideDigits(place, ':');
    drive.device_id = table.cell(DEVICE_ID);
    drive.state = bare(table.cell(STATE));
    drive.size = bare(table.cell(SIZE));
    drive.medium = bare(table.cell(MEDIUM));
    return drive;
}

// Of the values with one name the first counts, even an empty one.
using named_values = std::map<std::string_view, std::string>;

// Takes a line "name = value" of one of these names, the blanks of the value made underscores.
void takeNamed(named_values& said, std::string_view line,
               std::initializer_list<std::string_view> names) {
    const std::string_view name = before(line, " =");
    const auto* const found = std::find(names.begin(), names.end(), name);
    if (found == names.end())
        return;
    std::string value = bare(behind(line, "="));
    std::replace(value.begin(), value.end(), ' ', '_');
    said.emplace(*found, std::move(value));
}

// Takes a row of a card's lists of volumes and drives; of one place or number the first counts.
void takeCardRow(storcli_card& card, const table_reader& table, std::set<std::string>& places) {
    const std::string volume = table.cell(VOLUME), place = table.cell(PLACE);
    if (table.title() == "VD LIST" && besideDigits(volume, '/') && places.insert(volume).second)
        card.volumes.push_back({bare(behind(volume, "/")), bare(table.cell(TYPE)),
                                bare(table.cell(STATE)), bare(table.cell(SIZE))});
    if (table.title() == "PD LIST" && besideDigits(place, ':') && places.insert(place).second)
        card.drives.push_back(driveOf(table));
}

// The volume that a title is of: "/c0/v1", "PDs for VD 1", "VD1 Properties"; empty for others.
std::string_view volumeOf(std::string_view title) {
    if (title.substr(0, 2) == "/c")
        return behind(title, "/v");
    if (title.substr(0, MEMBERS.size()) == MEMBERS)
        return trimmed(title.substr(MEMBERS.size()));
    if (title.substr(0, 2) == "VD")
        return before(title.substr(2), " Properties");
    return {};
}

// The place of the drive that a title is of: "252:0" of "Drive /c0/e252/s0 State", ":0" of
// "Drive /c0/s0"; empty for others.
std::string placeOf(std::string_view title) {
    if (wordOf(title, 0) != "Drive")
        return "";
    const std::string_view path = wordOf(title, 1);
    const std::size_t slot = path.rfind("/s");
    if (path.substr(0, 2) != "/c" || slot == path.npos)
        return "";
    return std::string(behind(path.substr(0, slot), "/e")) + ":" +
           std::string(path.substr(slot + 2));
}

} // namespace

command_line storcliShow() {
    return {"storcli", "show"};
}

storcli_listing parseStorcliShow(std::string_view text) {
    storcli_listing listing;
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        const std::string_view first = wordOf(line, 0);
        if (wholeNumber(first).has_value())
            listing.controllers.push_back({std::string(first), std::string(line)});
        if (listing.told || !holdsText(line, "number of controllers"))
            continue;
        const std::string_view count = wordOf(line, 4);
        if (const auto number = wholeNumber(count); number.has_value()) {
            listing.told = true;
            listing.count = count.size() > 3 ? 0 : static_cast<int>(*number);
        }
    }
    return listing;
}

command_line storcliEnclosureDrives(const std::string& controller) {
    return {"storcli", "/c" + controller, "/eall", "/sall", "show"};
}

command_line storcliDrives(const std::string& controller) {
    return {"storcli", "/c" + controller, "/sall", "show"};
}

std::vector<storcli_drive> parseStorcliDrives(std::string_view text) {
    std::vector<storcli_drive> drives;
    std::set<std::string> places;
    for (table_reader table(text); table.next();) {
        if (!table.isRow())
            continue;
        const std::string place = table.cell(PLACE);
        if (besideDigits(place, ':', false) && wholeNumber(table.cell(DEVICE_ID)).has_value() &&
            places.insert(place).second)
            drives.push_back(driveOf(table));
    }
    return drives;
}

command_line storcliCard(const std::string& card) {
    return {"storcli", "/c" + card, "show"};
}

storcli_card parseStorcliCard(std::string_view text) {
    storcli_card card;
    named_values said;
    std::set<std::string> places;
    table_reader table(text);
    while (table.next()) {
        takeNamed(said, table.line(),
                  {"Controller", "Status", "Physical Drives", "Device Interface", "BIOS Version",
                   "FW Version", "Product Name"});
        if (table.isRow())
            takeCardRow(card, table, places);
    }
    card.drives_whole = table.isClosed("PD LIST");
    const bool has_none =
        card.drives.empty() && wholeNumber(said["Physical Drives"]).value_or(0) == 0;
    card.whole = said.count("Controller") != 0 && said["Status"] != "Failure" &&
                 (card.drives_whole || has_none);
    for (const char* name : {"Controller", "Status", "Physical Drives"})
        said.erase(name);
    card.named = !said.empty();
    card.interface = said["Device Interface"];
    card.bios = said["BIOS Version"];
    card.firmware = said["FW Version"];
    card.product = said["Product Name"];
    return card;
}

command_line storcliVolumes(const std::string& card) {
    return {"storcli", "/c" + card + "/vall", "show", "all"};
}

std::map<std::string, storcli_volume_facts> parseStorcliVolumes(std::string_view text) {
    std::map<std::string, storcli_volume_facts> volumes;
    std::map<std::string, std::set<std::string>> places; // of the members, by volume
    std::string volume;
    for (table_reader table(text); table.next();) {
        if (const auto number = volumeOf(table.title()); !number.empty())
            volume = number;
        if (volume.empty())
            continue;
        storcli_volume_facts& facts = volumes[volume];
        if (facts.os_name.empty() && before(table.line(), " =") == "OS Drive Name")
            facts.os_name = bare(behind(table.line(), "="));
        if (!table.isRow() || table.title().substr(0, MEMBERS.size()) != MEMBERS)
            continue;
        const std::string place = table.cell(PLACE);
        if (place.find(':') != place.npos && places[volume].insert(place).second)
            facts.members.push_back(driveOf(table));
    }
    return volumes;
}

command_line storcliEnclosureDriveFacts(const std::string& card) {
    return {"storcli", "/c" + card + "/eall/sall", "show", "all"};
}

command_line storcliDriveFacts(const std::string& card) {
    return {"storcli", "/c" + card + "/sall", "show", "all"};
}

std::map<std::string, storcli_drive_facts> parseStorcliDriveFacts(std::string_view text) {
    std::map<std::string, named_values> drives;
    named_values* current = nullptr;
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        if (const auto title = titleOf(line); title.has_value())
            if (const std::string place = placeOf(*title); !place.empty())
                current = &drives[place];
        if (current != nullptr)
            takeNamed(*current, line, {"SN", "Model Number", "WWN", "Firmware Revision"});
    }
    std::map<std::string, storcli_drive_facts> facts;
    for (auto& [place, said] : drives)
        facts[place] = {said["SN"], said["Model Number"], said["WWN"], said["Firmware Revision"]};
    return facts;
}
