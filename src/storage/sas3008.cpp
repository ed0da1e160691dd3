#include "storage/sas3008.h"

#include "storage/listing.h"
#include "text.h"
#include "tools/ask.h"
#include "tools/sas3ircu.h"

#include <map>

namespace {

// One controller on its way through a pass.
struct sas3008_controller {
    std::string index;  // its place among those listed
    std::string number; // in the words of sas3ircu
    const sas_display& display;

    bool inIrMode() const {
        return display.raid_support == "Yes";
    }
    std::string placeOf(const sas_place& place) const {
        return "C" + index + "E" + place.enclosure + "S" + place.slot;
    }
};

// A state without its code: "Okay" of "Okay(OKY)".
std::string withoutCode(const std::string& state) {
    return state.substr(0, state.find('('));
}

// MB / 1024 with two decimals, the rest cut off.
std::string gibibytes(const std::optional<std::uint64_t>& size) {
    if (!size.has_value())
        return "";
    const std::string hundredths = std::to_string(*size % 1024 * 100 / 1024);
    return std::to_string(*size / 1024) + (hundredths.size() == 1 ? ".0" : ".") + hundredths;
}

// Volumes are numbered downwards from 323.
std::string mappingIndex(const std::string& id) {
    constexpr std::uint64_t FIRST_ID = 323;
    const auto number = wholeNumber(id);
    if (!number.has_value())
        return "";
    return *number <= FIRST_ID ? std::to_string(FIRST_ID - *number)
                               : "-" + std::to_string(*number - FIRST_ID);
}

std::string volumeHealth(std::string_view state) {
    if (state.find(',') != state.npos)
        state = behind(state, ",");
    if (state == "Okay" || state == "Online" || state == "Initializing")
        return "OK";
    if (state == "Degraded")
        return "PredictiveFailureAnalysis";
    return state == "Failed" ? "Fail" : state == "Missing" ? "Miss" : "N/A";
}

std::string driveHealth(const std::string& state) {
    if (state == "Optimal" || state == "Online" || state == "HotSpare" || state == "Ready")
        return "OK";
    if (state == "Degraded")
        return "PredictiveFailureAnalysis";
    if (state == "Failed")
        return "Fail";
    return state == "Missing" || state == "Standby" ? state : "N/A";
}

std::string controllerRecord(const sas3008_controller& controller) {
    const sas_display& display = controller.display;
    return (controller.inIrMode() ? "BRCM_IR_CNTL;" : "BRCM_II_CNTL;") + controller.index + ";" +
           controller.number + ";" + display.type + ";" + display.bios + ";" + display.firmware +
           ";" + display.channel;
}

std::string volumeRecord(const sas3008_controller& controller, const sas_volume& volume) {
    const std::string state = withoutCode(volume.status);
    const std::string start = "BRCM_IR_VD;" + mappingIndex(volume.id) + ";" + controller.index +
                              "-" + volume.id + ";" + volumeHealth(state) + ";" + state + ";" +
                              volume.level + ";";
    if (volume.level == "Unknown")
        return start + ";";
    std::vector<std::string> members;
    for (const sas_place& place : volume.members)
        members.push_back(controller.placeOf(place));
    return withList(start + gibibytes(volume.size) + ";", members, ',');
}

std::string driveRecord(const sas3008_controller& controller, const sas_drive& drive,
                        std::size_t place) {
    const std::string state = withoutCode(drive.state);
    const std::string model = drive.manufacturer.empty() && drive.model.empty()
                                  ? ""
                                  : drive.manufacturer + " " + drive.model;
    // npos + 1 is 0
    const std::string kind = drive.type.substr(drive.type.find('_') + 1);
    return (controller.inIrMode() ? "BRCM_IR_PD;" : "BRCM_IT_PD;") + std::to_string(place) +
           ";N/A:" + driveHealth(state) + ":" + state + ":" + drive.serial + ":" + drive.firmware +
           ";" + controller.placeOf(drive.place) + ";" + kind + ";N/A;" + model + ";" +
           gibibytes(drive.size);
}

void addRecords(storage_items& items, const sas3008_controller& controller, bool listed) {
    const sas_display& display = controller.display;
    if (!controller.inIrMode() && display.raid_support != "No")
        return;
    items.add(controllerRecord(controller));
    if (controller.inIrMode())
        for (const sas_volume& volume : display.volumes)
            items.add(volumeRecord(controller, volume));
    std::size_t place = 0;
    for (const sas_drive& drive : display.drives)
        items.add(driveRecord(controller, drive, place++), listed && !drive.state.empty(), listed);
}

// The drives behind a controller in this mode, or behind any when it is not known.
void noteUnlisted(storage_items& items, const std::string& raid_support) {
    if (raid_support != "Yes")
        items.listingUnknown(drive_kind::it);
    if (raid_support != "No")
        items.listingUnknown(drive_kind::raid);
}

void collectController(storage_items& items, const std::string& index, const std::string& number,
                       const char* label) {
    static std::map<std::string, std::string> raid_support; // by number, when it was told last
    const command_line words = sas3ircuDisplay(number);
    const reply& answer = ask({words, label, "sas3ircu " + number});
    const sas_display display = parseSas3ircuDisplay(printedText(answer));
    // A first answer that failed half-way names drives that are none.
    const bool listed = isWholeListing(words, answer, display.whole) &&
                        (display.whole || answer.succeeded() || display.drives.empty());
    if (!listed)
        noteUnlisted(items, raid_support[number]);
    else if (display.whole)
        raid_support[number] = display.raid_support;
    addRecords(items, {index, number, display}, listed);
}

} // namespace

void collectSas3008(storage_items& items, const char* label) {
    const reply& answer = ask({sas3ircuList(), label});
    const sas3ircu_listing listing = parseSas3ircuList(printedText(answer));
    if (!isWholeListing(sas3ircuList(), answer, listing.told))
        noteUnlisted(items, "");
    std::size_t index = 0;
    for (const std::string& number : listing.sas3008) {
        if (items.full())
            return;
        collectController(items, std::to_string(index++), number, label);
    }
}
