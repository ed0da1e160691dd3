#include "tools/camcontrol.h"

#include "text.h"

#include <algorithm>

namespace {

constexpr std::string_view WORD_LETTERS =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
constexpr std::string_view MODEL = "device model";

} // namespace

command_line camcontrolDevlist() {
    return {"camcontrol", "devlist"};
}

std::vector<cam_device> parseDevlist(std::string_view text) {
    std::vector<cam_device> devices;
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        // The description is free text.
        line.remove_prefix(line.rfind('>') + 1);
        cam_device device;
        device.bus = digitsBehind(line, "scbus");
        while (!line.empty()) {
            const std::string_view word = line.substr(0, line.find_first_not_of(WORD_LETTERS));
            if (!word.empty())
                device.words.emplace_back(word);
            line.remove_prefix(std::min(word.size() + 1, line.size()));
        }
        devices.push_back(std::move(device));
    }
    return devices;
}

command_line camcontrolIdentify(const std::string& disk) {
    return {"camcontrol", "identify", disk};
}

identify_facts parseIdentify(std::string_view text) {
    identify_facts facts;
    std::string_view trims;
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        if (sameText(line.substr(0, MODEL.size()), MODEL)) {
            facts.has_model = true;
            if (facts.model.empty())
                facts.model = bare(line.substr(MODEL.size()));
        }
        if (trims.empty() && line.find("TRIM)") != line.npos)
            trims = wordOf(line, 4);
    }
    facts.trim = trims == "yes";
    return facts;
}
