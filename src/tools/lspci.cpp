#include "tools/lspci.h"

#include "text.h"

#include <algorithm>
#include <cctype>

namespace {

// A device line begins with its slot, "00:1f.2" or "0000:00:1f.2".
bool isDeviceLine(std::string_view line) {
    const std::string_view slot = line.substr(0, line.find(' '));
    return slot.find(':') != slot.npos && slot.find('.') != slot.npos &&
           slot.find_first_not_of("0123456789abcdefABCDEF:.") == slot.npos;
}

// Where "#" and a digit stand, else the end.
std::size_t numberSign(std::string_view text) {
    std::size_t at = text.find('#');
    while (at != text.npos &&
           (at + 1 == text.size() || std::isdigit(static_cast<unsigned char>(text[at + 1])) == 0))
        at = text.find('#', at + 1);
    return at;
}

// What stands behind "controller:", without its revision and its number.
std::string controllerName(std::string_view line) {
    constexpr std::string_view TITLE = "controller:";
    if (line.find(TITLE) != line.npos)
        line = behind(line, TITLE);
    line = line.substr(0, line.find("(rev"));
    line = line.substr(0, numberSign(line));
    std::string name(line);
    std::replace(name.begin(), name.end(), ':', ' ');
    return bare(name);
}

// Without the word that ends with HCI and what follows it.
std::string withoutInterface(const std::string& name) {
    constexpr std::string_view HCI = "HCI";
    for (std::size_t at = name.find(HCI); at != name.npos; at = name.find(HCI, at + 1)) {
        const std::size_t end = at + HCI.size();
        if (end < name.size() &&
            (std::isalnum(static_cast<unsigned char>(name[end])) != 0 || name[end] == '_'))
            continue;
        return std::string(trimmed(std::string_view(name).substr(0, name.rfind(' ', at) + 1)));
    }
    return name;
}

// How surely a device line tells of a controller of this kind: by its class, which stands before
// the first ": ", by a word of its own ("ATA", "SATA"), or by no more than the letters.
int likeness(std::string_view line, std::string_view kind) {
    constexpr int BY_CLASS = 3, BY_WORD = 2, BY_LETTERS = 1, NONE = 0;
    if (!holdsText(line, kind))
        return NONE;
    if (holdsText(line.substr(0, line.find(": ")), kind))
        return BY_CLASS;
    while (!line.empty()) {
        const std::string_view word = nextWord(line);
        for (const char* before : {"", "S", "P"})
            if (sameText(word, before + std::string(kind)))
                return BY_WORD;
    }
    return BY_LETTERS;
}

// The best line so far of a kind of controller.
struct best_line {
    std::string_view kind, line = {};
    int likeness = 0;

    void offer(std::string_view other) {
        const int its = ::likeness(other, kind);
        if (its > likeness) {
            line = other;
            likeness = its;
        }
    }
};

} // namespace

command_line lspciVerbose() {
    return {"lspci", "-v"};
}

disk_controllers parseLspci(std::string_view text) {
    best_line usb{"usb"}, ata{"ata"};
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        if (!isDeviceLine(line))
            continue;
        usb.offer(line);
        ata.offer(line);
    }
    return {withoutInterface(controllerName(usb.line)), controllerName(ata.line)};
}
