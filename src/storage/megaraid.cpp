#include "storage/megaraid.h"

#include "storage/listing.h"
#include "storage/smart_health.h"
#include "text.h"
#include "tools/ask.h"
#include "tools/storcli.h"

#include <algorithm>
#include <set>

namespace {

storcli_listing controllers(const char* label) {
    return parseStorcliShow(printedText(ask({storcliShow(), label})));
}

std::vector<storcli_drive> drivesBehind(const std::string& controller, const char* label) {
    const std::string subject = "storcli /c" + controller;
    auto drives =
        parseStorcliDrives(printedText(ask({storcliEnclosureDrives(controller), label, subject})));
    drives.erase(std::remove_if(drives.begin(), drives.end(),
                                [](const storcli_drive& drive) { return !drive.in_enclosure; }),
                 drives.end());
    return !drives.empty()
               ? drives
               : parseStorcliDrives(printedText(ask({storcliDrives(controller), label, subject})));
}

// What the two collectors tell differently.
struct lsi_record {
    std::string device_start; // before the device ID
    bool ok_may_go_on;        // a health text that goes on after "OK" is a predicted failure
    bool with_slot;
};

void addDrives(storage_items& items, const std::string& controller, const lsi_record& how,
               const char* label) {
    for (const storcli_drive& drive : drivesBehind(controller, label)) {
        if (items.full())
            return;
        const std::string device = "pass" + drive.device_id;
        const smart_reply smart = askSmart(smartctlDrive(device), device, label, true);
        items.add("LSI;" + how.device_start + drive.device_id + ":" +
                      smartHealth(smart.facts, how.ok_may_go_on) + ":" + smart.facts.serial + ":" +
                      smart.facts.firmware + (how.with_slot ? ":" + drive.slot : ""),
                  smart.known);
    }
}

bool isMegaraid(const std::string& line) {
    return holdsText(line, "avago") || holdsText(line, "lsi3108") || holdsText(line, "sas3108");
}

} // namespace

void collectMegaraid(storage_items& items, const char* label) {
    const storcli_listing listing = controllers(label);
    if (listing.count == 0)
        return;
    std::set<std::string> done;
    for (const storcli_controller& controller : listing.controllers)
        if (isMegaraid(controller.line) && done.insert(controller.number).second && !items.full())
            addDrives(items, controller.number, {"/dev/pass", true, true}, label);
}

void collectLsi(storage_items& items, const char* label) {
    const int count = controllers(label).count;
    for (int controller = 0; controller < count && !items.full(); ++controller)
        addDrives(items, std::to_string(controller), {"", false, false}, label);
}
