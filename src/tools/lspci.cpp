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

} // namespace

command_line lspciVerbose() {
    return {"lspci", "-v"};
}

disk_controllers parseLspci(std::string_view text) {
    disk_controllers found;
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        if (!isDeviceLine(line))
            continue;
        if (found.usb.empty() && holdsText(line, "usb"))
            found.usb = withoutInterface(controllerName(line));
        if (found.ata.empty() && holdsText(line, "ata"))
            found.ata = controllerName(line);
    }
    return found;
}
