#include "tools/smartctl.h"

#include "text.h"

#include <algorithm>

namespace {

constexpr std::string_view ATTRIBUTE_CHECK = "Warning: This result is based on an Attribute check.";
// An empty line ends what is said of the health; of some drives the attributes follow without one.
constexpr std::string_view ATTRIBUTES[] = {"===", "SMART Attributes Data Structure",
                                           "Current Drive Temperature", "Drive Trip Temperature"};

bool endsHealth(std::string_view line) {
    return trimmed(line).empty() ||
           std::any_of(std::begin(ATTRIBUTES), std::end(ATTRIBUTES), [&](std::string_view title) {
               return line.substr(0, title.size()) == title;
           });
}

// The values of the lines that one wording of the result calls for.
struct health_lines {
    std::string_view wording;
    std::string said = {};
    int due = 0; // lines that still belong to the result
    bool whole = false;

    void take(std::string_view line) {
        const std::size_t colon = line.find(':');
        if (endsHealth(line))
            due = 0;
        else if (holdsText(line.substr(0, colon), wording))
            due = 3;
        if (due > 0) {
            --due;
            // Of fields between colons the second counts; a line without one counts whole.
            const std::string_view value = line.substr(colon == line.npos ? 0 : colon + 1);
            said.append(" ").append(value.substr(0, value.find(':')));
        }
        whole = !said.empty() && due == 0;
    }
};

void takeFirst(std::string& value, std::string_view line, std::string_view label) {
    if (!value.empty())
        return;
    if (const auto told = labelled(line, label); told.has_value())
        value = bare(*told);
}

void takeTemperature(std::string& value, std::string_view line) {
    if (value.empty() && wordOf(line, 0) == "194" && wordOf(line, 1) == "Temperature_Celsius")
        value = bare(wordOf(line, 9));
}

} // namespace

command_line smartctlDisk(const std::string& disk) {
    return {"smartctl", "-i", "-H", "-A", "/dev/" + disk};
}

command_line smartctlDrive(const std::string& disk) {
    return {"smartctl", "-i", "-H", "/dev/" + disk};
}

smart_facts parseSmartctl(std::string_view text, bool drop_warning) {
    smart_facts facts;
    health_lines test{"test result"};
    health_lines status{"health status"};
    for (std::string_view line, rest = text; nextLine(rest, line);) {
        if (drop_warning && line.find(ATTRIBUTE_CHECK) != line.npos)
            continue;
        takeFirst(facts.serial, line, "Serial Number");
        takeFirst(facts.firmware, line, "Firmware Version");
        takeFirst(facts.rotation, line, "Rotation Rate");
        takeTemperature(facts.temperature, line);
        if (holdsText(line, "unknown usb bridge"))
            facts.unknown_usb_bridge = true;
        test.take(line);
        status.take(line);
    }
    facts.health = trim(test.said);
    facts.health_whole = test.whole;
    if (facts.health.empty()) {
        facts.health = trim(status.said);
        facts.health_whole = status.whole;
    }
    facts.recognised = text.substr(0, 9) == "smartctl " || !facts.health.empty();
    return facts;
}
