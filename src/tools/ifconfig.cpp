#include "tools/ifconfig.h"

#include "text.h"

#include <algorithm>

namespace {

constexpr std::size_t INET6_MOST = 128; // of one interface; more than any record holds

// "Ethernet autoselect (1000baseT <full-duplex>)": the medium in use stands in parentheses behind
// the selected one, or without them, or there is only the selected one.
std::vector<std::string> mediumWords(std::string_view line) {
    std::vector<std::string> words;
    const std::size_t open = line.find('(');
    if (open != line.npos) {
        std::string_view inside = line.substr(open + 1);
        inside = inside.substr(0, inside.find('('));
        words.emplace_back(nextWord(inside));
    }
    std::string behind_selected(wordOf(line, 2));
    behind_selected.erase(std::remove(behind_selected.begin(), behind_selected.end(), '('),
                          behind_selected.end());
    words.push_back(behind_selected);
    if (open == line.npos)
        words.emplace_back(wordOf(line, 1));
    return words;
}

void takeLine(std::string_view line, ifconfig_interface& interface) {
    std::string_view label = nextWord(line);
    if (label == "hwaddr") { // some releases end this line only behind the medium
        nextWord(line);
        label = nextWord(line);
    }
    if (label == "inet6" && interface.inet6.size() < INET6_MOST)
        interface.inet6.emplace_back(nextWord(line));
    else if (label == "media:" && interface.media.empty())
        interface.media = mediumWords(line);
    else if (label == "status:" && interface.status.empty())
        interface.status = nextWord(line);
}

} // namespace

command_line ifconfigCommand() {
    return {"ifconfig", "-a"};
}

std::map<std::string, ifconfig_interface> parseIfconfig(std::string_view text) {
    std::map<std::string, ifconfig_interface> interfaces;
    ifconfig_interface* current = nullptr;
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        const std::size_t name_end = line.find(": flags=");
        if (name_end != line.npos && name_end > 0 && line.find_first_of(" \t") != 0)
            current = &interfaces[std::string(line.substr(0, name_end))];
        else if (current != nullptr)
            takeLine(line, *current);
    }
    return interfaces;
}
