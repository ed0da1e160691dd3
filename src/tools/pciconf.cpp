#include "tools/pciconf.h"

#include "text.h"

#include <algorithm>

namespace {

// What stands between the first "=" and the second, if there is one.
std::string quotedValue(std::string_view line) {
    const std::string_view value = behind(line, "=");
    std::string text(trimmed(value.substr(0, value.find('='))));
    text.erase(std::remove(text.begin(), text.end(), '\''), text.end());
    return text;
}

} // namespace

command_line pciconfCommand() {
    return {"pciconf", "-lv"};
}

std::map<std::string, pci_device> parsePciconf(std::string_view text) {
    std::map<std::string, pci_device> devices;
    pci_device* current = nullptr;
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        if (line.find_first_of(" \t") != 0) {
            const std::size_t name_end = line.find('@');
            current =
                name_end == line.npos ? nullptr : &devices[std::string(line.substr(0, name_end))];
            continue;
        }
        if (current == nullptr)
            continue;
        const std::string_view label = before(line, "=");
        if (label == "vendor")
            current->vendor = quotedValue(line);
        else if (label == "device")
            current->device = quotedValue(line);
    }
    return devices;
}
