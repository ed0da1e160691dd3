#include "storage/drive_family.h"

#include "bmc/events.h"
#include "text.h"

#include <cstdio>

hdd_list *g_hdd_head, *g_hdd_prev;
hdd_list *g_3008_it_hdd_head, *g_3008_it_hdd_prev;
hdd_list *g_raid_hdd_head, *g_raid_hdd_prev;

namespace {

constexpr std::size_t SERIAL_FIELD = 3;   // onboard
constexpr std::size_t INDEX_FIELD = 5;    // onboard
constexpr std::size_t LOCATION_FIELD = 7; // behind a controller

void describeOnboard(hdd_list& node, const record_fields& fields) {
    copyText(node.index, fields[INDEX_FIELD]);
}

struct drive_location {
    int controller = 0;
    int enclosure = 0;
    int slot = 0;
};

// What does not parse stays 0; nine digits fit an int.
drive_location locationOf(const record_fields& fields) {
    drive_location place;
    (void)std::sscanf(fields[LOCATION_FIELD].c_str(), "C%9dE%9dS%9d", &place.controller,
                      &place.enclosure, &place.slot);
    return place;
}

void describeController(hdd_list& node, const record_fields& fields) {
    const drive_location place = locationOf(fields);
    node.controller = place.controller;
    node.enclosure = place.enclosure;
    node.slot = place.slot;
}

// Two numbers in a byte, the low one in `shift` bits. Bits that don't fit are lost.
BYTE joined(int high, unsigned shift, int low) {
    const unsigned mask = (1U << shift) - 1;
    return static_cast<BYTE>((static_cast<unsigned>(high) << shift) +
                             (static_cast<unsigned>(low) & mask));
}

drive_bytes onboardBytes(const record_fields& fields) {
    return {static_cast<BYTE>(leadingInteger(fields[INDEX_FIELD], 0)), 0xFF};
}

// An index that is not a number leaves the byte of the drive reported before.
drive_bytes onboardMissing(const hdd_list& node, drive_bytes previous) {
    return {static_cast<BYTE>(leadingInteger(node.index, previous.event2)), 0xFF};
}

// slot; controller in bits 7:6 and enclosure in bits 5:0
drive_bytes itDriveBytes(int controller, int enclosure, int slot) {
    return {static_cast<BYTE>(slot), joined(controller, 6, enclosure)};
}

drive_bytes itBytes(const record_fields& fields) {
    const drive_location place = locationOf(fields);
    return itDriveBytes(place.controller, place.enclosure, place.slot);
}

// controller in bits 7:4 and slot in bits 3:0
drive_bytes raidBytes(const record_fields& fields) {
    const drive_location place = locationOf(fields);
    return {joined(place.controller, 4, place.slot), 0xFF};
}

drive_bytes controllerMissing(const hdd_list& node, drive_bytes /*previous*/) {
    return itDriveBytes(node.controller, node.enclosure, node.slot);
}

drive_family onboardFamily() noexcept {
    drive_family family;
    family.tag = "HD";
    family.name_field = 1;
    family.state_field = 2;
    family.index_field = INDEX_FIELD;
    family.serial_field = SERIAL_FIELD;
    family.rules = {
        {"Fail", event_fault, match::exact, match::exact, "OK"},
        {"FAILED", event_failed_array, match::exact, match::exact},
        {"REBUILD", event_rebuild, match::contains, match::contains},
        {"RESYNC", event_rebuild, match::contains, match::contains},
        {"PredictiveFailureAnalysis", event_predictive, match::contains, match::contains},
    };
    family.sensor = onboard_sensor_num;
    family.missing_sensor = onboard_sensor_num;
    family.bytes = onboardBytes;
    family.missing_bytes = onboardMissing;
    family.describe = describeOnboard;
    family.head = &g_hdd_head;
    family.prev = &g_hdd_prev;
    family.empty_list_is_first_pass = true;
    family.log_before_event = true;
    family.first_pass_title = "add storage record init ";
    family.new_title = "add storage record ";
    family.missing_text = "HDD missing";
    return family;
}

// What the drives behind controllers have in common. A missing one speaks with the sensor and the
// bytes of an IT drive, whatever its other events do.
drive_family controllerFamily() noexcept {
    drive_family family;
    family.name_field = LOCATION_FIELD;
    family.state_field = 4;
    family.missing_sensor = sas3008_it_pd_sensor_num;
    family.missing_bytes = controllerMissing;
    family.describe = describeController;
    family.new_text = "new drive";
    return family;
}

drive_family itFamily() noexcept {
    drive_family family = controllerFamily();
    family.tag = "BRCM_IT_PD";
    family.rules = {
        {"Degraded", event_predictive, match::exact, match::exact},
        {"Failed", event_fault, match::exact, match::contains},
        {"HotSpare", event_hot_spare, match::exact, match::contains},
        {"OutofSync", event_out_of_sync, match::exact, match::contains},
        {"Rebuilding", event_rebuild, match::exact, match::contains},
    };
    family.sensor = sas3008_it_pd_sensor_num;
    family.bytes = itBytes;
    family.head = &g_3008_it_hdd_head;
    family.prev = &g_3008_it_hdd_prev;
    family.first_pass_title = "Add 3008 record init";
    family.new_title = "Add 3008 record";
    family.found_title = "Found 3008 record";
    family.missing_text = "3008 IT device missing";
    return family;
}

drive_family raidFamily() noexcept {
    drive_family family = controllerFamily();
    family.tag = "BRCM_IR_PD";
    family.rules = {
        {"Degraded", event_predictive, match::exact, match::exact},
        {"UBad", event_fault, match::exact, match::exact},
        {"UBUnsp", event_fault, match::exact, match::exact},
        {"DHS", event_hot_spare, match::exact, match::exact},
        {"GHS", event_hot_spare, match::exact, match::exact},
        {"HSPShld", event_hot_spare, match::exact, match::exact},
        {"OutofSync", event_out_of_sync, match::exact, match::contains},
        {"Rbld", event_rebuild, match::exact, match::exact},
    };
    family.sensor = sas3008_pd_sensor_num;
    family.bytes = raidBytes;
    family.head = &g_raid_hdd_head;
    family.prev = &g_raid_hdd_prev;
    family.first_pass_title = "Add RAID record init";
    family.new_title = "Add RAID record";
    family.found_title = "Found RAID record";
    family.missing_text = "Raid device missing";
    return family;
}

} // namespace

drive_family drive_families[DRIVE_KINDS] = {onboardFamily(), itFamily(), raidFamily()};
