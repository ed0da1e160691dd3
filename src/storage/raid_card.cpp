#include "storage/raid_card.h"

#include "config/configuration.h"
#include "config/logs.h"
#include "storage/listing.h"
#include "text.h"
#include "tools/ask.h"

#include <algorithm>
#include <regex.h>
#include <set>
#include <utility>

namespace {

// Whether time and memory for an expression are bounded: a back-reference takes exponential time,
// and a repetition copies what it repeats, copies of inner ones included.
bool isBounded(const std::string& pattern) {
    constexpr std::uint64_t MOST_COPIES = 1000, MOST_CHARACTERS = 65536;
    std::uint64_t singles = 1, groups = 1; // copies of characters; of what stands in brackets
    for (std::size_t at = 0; at < pattern.size() && singles * groups <= MOST_COPIES; ++at) {
        std::uint64_t copies = 0;
        if (pattern[at] == '\\') {
            if (wholeNumber(pattern.substr(++at, 1)).has_value())
                return false;
        } else if (pattern[at] == '+') {
            copies = 2;
        } else if (pattern[at] == '{') {
            const std::string counts = pattern.substr(at + 1, pattern.find('}', at) - at - 1);
            for (const std::string& most : splitFields(counts, ",", 2))
                copies = std::clamp<std::uint64_t>(wholeNumber(most).value_or(1), copies,
                                                   MOST_COPIES + 1);
        }
        // A repetition may be repeated as a group is.
        constexpr std::string_view REPEATABLE = ")}+*?";
        if (copies > 1 && at > 0 && REPEATABLE.find(pattern[at - 1]) != REPEATABLE.npos)
            groups *= copies;
        else
            singles += copies;
    }
    return singles * groups <= MOST_COPIES && groups * pattern.size() <= MOST_CHARACTERS;
}

// An extended regular expression, compiled.
class card_pattern {
  public:
    explicit card_pattern(const std::string& pattern) {
        // A repetition of nothing at the start, as in a file name's pattern, stands for nothing.
        const std::string text =
            pattern.substr(std::min(pattern.find_first_not_of("*+?"), pattern.size()));
        m_compiled =
            !text.empty() && isBounded(text) &&
            regcomp(&m_expression, text.c_str(), REG_EXTENDED | REG_ICASE | REG_NOSUB) == 0;
    }
    ~card_pattern() {
        if (m_compiled)
            regfree(&m_expression);
    }
    card_pattern(const card_pattern&) = delete;
    card_pattern& operator=(const card_pattern&) = delete;

    bool isUsable() const {
        return m_compiled;
    }
    bool matches(const std::string& line) const {
        return m_compiled && regexec(&m_expression, line.c_str(), 0, nullptr, 0) == 0;
    }

  private:
    regex_t m_expression{};
    bool m_compiled = false;
};

// What the collection of the cards has come to.
struct card_pass {
    storage_items& items;
    const char* label;
    int cards_told = 0;
    bool storcli_failed = false; // could not be started

    const reply& answer(const command_line& words, const std::string& subject = "") {
        const reply& answer = ask({words, label, subject});
        storcli_failed = storcli_failed || answer.end == program_end::not_started;
        return answer;
    }
};

std::string volumeHealth(const std::string& state) {
    const auto holds = [&](const char* word) { return state.find(word) != state.npos; };
    const bool well = holds("Rec") || holds("OfLn") || holds("Optl") || holds("dflt");
    return !well && (holds("Dgrd") || holds("Pdgd")) ? "PredictiveFailureAnalysis" : "OK";
}

std::string placeOf(const std::string& card, const storcli_drive& drive) {
    return "C" + card + "E" + drive.enclosure + "S" + drive.slot;
}

void addVolumes(card_pass& pass, const std::string& number, const storcli_card& card) {
    auto facts = parseStorcliVolumes(
        printedText(pass.answer(storcliVolumes(number), "storcli /c" + number)));
    for (const storcli_volume& volume : card.volumes) {
        const storcli_volume_facts& told = facts[volume.number];
        std::vector<std::string> members;
        for (const storcli_drive& drive : told.members)
            members.push_back(placeOf(number, drive));
        pass.items.add(withList("BRCM_IR_VD;" + volume.number + ";" + told.os_name + ";" +
                                    volumeHealth(volume.state) + ";" + volume.state + ";" +
                                    volume.level + ";" + volume.size + ";",
                                members, ','));
    }
}

// The details of the drives by place, those behind a card without enclosures by slot alone.
std::map<std::string, storcli_drive_facts> driveFacts(card_pass& pass, const std::string& number) {
    for (const auto& words : {storcliEnclosureDriveFacts(number), storcliDriveFacts(number)})
        if (auto facts =
                parseStorcliDriveFacts(printedText(pass.answer(words, "storcli /c" + number)));
            !facts.empty())
            return facts;
    return {};
}

void addDrives(card_pass& pass, const std::string& number, const storcli_card& card, bool listed) {
    auto facts = driveFacts(pass, number);
    std::size_t place = 0;
    for (const storcli_drive& drive : card.drives) {
        const bool by_place = facts.count(drive.place()) != 0;
        const storcli_drive_facts& told = facts[by_place ? drive.place() : ":" + drive.slot];
        const char* health = drive.state == "UBad" || drive.state == "UBUnsp" ? "Fail" : "OK";
        pass.items.add("BRCM_IR_PD;" + std::to_string(place++) + ";" + told.wwn + ":" + health +
                           ":" + drive.state + ":" + told.serial + ":" + told.firmware + ";" +
                           placeOf(number, drive) + ";" + drive.medium + ";N/A;" + told.model +
                           ";" + drive.size,
                       listed && !drive.state.empty(), listed);
    }
}

void collectCard(card_pass& pass, const std::string& number) {
    const command_line words = storcliCard(number);
    const reply& answer = pass.answer(words, "storcli /c" + number);
    const storcli_card card = parseStorcliCard(printedText(answer));
    // A first answer that failed half-way names drives that are none.
    const bool listed = isWholeListing(words, answer, card.whole) &&
                        (answer.succeeded() || card.drives.empty() || card.drives_whole);
    if (!listed)
        pass.items.listingUnknown(drive_kind::raid);
    if (card.named) {
        const std::string index = pass.cards_told == 0 ? "" : std::to_string(pass.cards_told);
        pass.items.add("BRCM_IR_CNTL;" + index + ";" + number + ";" + card.product + ";" +
                       card.bios + ";" + card.firmware + ";" + card.interface);
        ++pass.cards_told;
    }
    if (!card.volumes.empty() && !pass.items.full())
        addVolumes(pass, number, card);
    if (!card.drives.empty() && !pass.items.full())
        addDrives(pass, number, card, listed);
}

void collectCards(card_pass& pass) {
    const auto configuration = tools.read_file(ini_file);
    const std::string pattern = parseCardPattern(configuration.value_or(""));
    if (!configuration.has_value())
        pass.items.listingUnknown(drive_kind::raid);
    if (pattern.empty())
        return;
    static std::string refused; // told once, not in each pass
    if (!card_pattern(pattern).isUsable() && std::exchange(refused, pattern) != pattern)
        printErrLog("raidCards ->", "no expression that can be used: " + pattern);
    const reply& answer = pass.answer(storcliShow());
    const storcli_listing listing = parseStorcliShow(printedText(answer));
    const bool whole =
        listing.told && static_cast<std::size_t>(listing.count) <= listing.controllers.size();
    if (!isWholeListing(storcliShow(), answer, whole))
        pass.items.listingUnknown(drive_kind::raid);
    for (const std::string& card : selectCards(listing, pattern))
        if (!pass.items.full())
            collectCard(pass, card);
}

} // namespace

std::string parseCardPattern(std::string_view configuration) {
    for (std::string_view line, rest = configuration; nextLine(rest, line);) {
        if (before(line, "=") != "raidCards")
            continue;
        const std::string_view value = behind(line, "=");
        std::string text;
        for (const char c : value.substr(0, value.find('='))) {
            const auto byte = static_cast<unsigned char>(c);
            if (c == '\t' || (byte >= 0x20 && byte != 0x7F && c != ';'))
                text += c;
        }
        trim(text);
        if (!text.empty() && text.front() == '"')
            text.erase(0, 1);
        if (!text.empty() && text.back() == '"')
            text.pop_back();
        if (!text.empty())
            return text;
    }
    return "";
}

std::vector<std::string> selectCards(const storcli_listing& listing, const std::string& pattern) {
    const card_pattern expression(pattern);
    std::vector<std::string> cards;
    std::set<std::string_view> selected;
    for (const storcli_controller& controller : listing.controllers)
        if (expression.matches(controller.line) && selected.insert(controller.number).second)
            cards.push_back(controller.number);
    return cards;
}

void collectRaidCards(storage_items& items, const char* label) {
    card_pass pass{items, label};
    collectCards(pass);
    if (pass.storcli_failed)
        printErrLog(label, "command not found");
}
