#include "storage/drive_events.h"

#include "bmc/events.h"
#include "config/logs.h"
#include "storage/drive_state.h"
#include "text.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace {

using record_fields = std::vector<std::string>;

enum class match { exact, contains };

// A state word: the event that is asserted when the state becomes one that matches it, and
// deasserted when a stored state that matches it changes. In a table the first match counts.
struct state_rule {
    const char* word;
    BYTE event_type;
    match raised;
    match cleared;
    const char* cleared_by = nullptr; // the only new state that clears it; null: any
};

constexpr state_rule ONBOARD_RULES[] = {
    {"Fail", event_fault, match::exact, match::exact, "OK"},
    {"FAILED", event_failed_array, match::exact, match::exact},
    {"REBUILD", event_rebuild, match::contains, match::contains},
    {"RESYNC", event_rebuild, match::contains, match::contains},
    {"PredictiveFailureAnalysis", event_predictive, match::contains, match::contains},
};

constexpr state_rule IT_RULES[] = {
    {"Degraded", event_predictive, match::exact, match::exact},
    {"Failed", event_fault, match::exact, match::contains},
    {"HotSpare", event_hot_spare, match::exact, match::contains},
    {"OutofSync", event_out_of_sync, match::exact, match::contains},
    {"Rebuilding", event_rebuild, match::exact, match::contains},
};

constexpr state_rule RAID_RULES[] = {
    {"Degraded", event_predictive, match::exact, match::exact},
    {"UBad", event_fault, match::exact, match::exact},
    {"UBUnsp", event_fault, match::exact, match::exact},
    {"DHS", event_hot_spare, match::exact, match::exact},
    {"GHS", event_hot_spare, match::exact, match::exact},
    {"HSPShld", event_hot_spare, match::exact, match::exact},
    {"OutofSync", event_out_of_sync, match::exact, match::contains},
    {"Rbld", event_rebuild, match::exact, match::exact},
};

struct rule_table {
    const state_rule* first;
    std::size_t size;

    const state_rule* begin() const {
        return first;
    }
    const state_rule* end() const {
        return first + size;
    }
};

// Everything in which the kinds of drives differ.
template <class Node>
struct drive_family {
    const char* tag;
    std::size_t name_field;
    std::size_t state_field;
    BYTE sensor;
    drive_bytes (*bytes)(const record_fields& fields);
    void (*describe)(Node& node, const record_fields& fields); // fills the family's own fields
    rule_table rules;

    Node*& head;
    Node*& prev;
    Node*& current;

    bool empty_list_is_first_pass; // a list that is empty in a later pass counts as its first
    bool log_before_event;         // a new drive is logged before its presence event

    const char* first_pass_title;
    const char* new_title;
    const char* new_text;    // a line of its own before the drive's name; null: none
    const char* found_title; // title of a returning drive's name; null: nothing is logged
};

struct drive_location {
    int controller = 0;
    int enclosure = 0;
    int slot = 0;
};

drive_location parseLocation(const std::string& location) {
    drive_location place;
    // Nine digits fit an int; what does not parse stays 0.
    (void)std::sscanf(location.c_str(), "C%9dE%9dS%9d", &place.controller, &place.enclosure,
                      &place.slot);
    return place;
}

constexpr std::size_t INDEX_FIELD = 5;    // onboard
constexpr std::size_t LOCATION_FIELD = 7; // behind a controller

drive_bytes onboardBytes(const record_fields& fields) {
    return {static_cast<BYTE>(leadingInteger(fields[INDEX_FIELD], 0)), 0xFF};
}

drive_bytes itBytes(const record_fields& fields) {
    const drive_location place = parseLocation(fields[LOCATION_FIELD]);
    return itDriveBytes(place.controller, place.enclosure, place.slot);
}

drive_bytes raidBytes(const record_fields& fields) {
    const drive_location place = parseLocation(fields[LOCATION_FIELD]);
    return raidDriveBytes(place.controller, place.slot);
}

void describeOnboard(hdd_list& node, const record_fields& fields) {
    copyText(node.index, fields[INDEX_FIELD]);
    node.type = drive_type_onboard;
}

void describeController(hdd_3008_list& node, const record_fields& fields) {
    const drive_location place = parseLocation(fields[LOCATION_FIELD]);
    node.controller = place.controller;
    node.enclosure = place.enclosure;
    node.slot = place.slot;
    node.type = drive_type_controller;
}

const drive_family<hdd_list> ONBOARD = {
    "HD",
    1,
    2,
    onboard_sensor_num,
    onboardBytes,
    describeOnboard,
    {ONBOARD_RULES, std::size(ONBOARD_RULES)},
    g_hdd_head,
    g_hdd_prev,
    g_hdd_current,
    true,
    true,
    "add storage record init ",
    "add storage record ",
    nullptr,
    nullptr,
};

const drive_family<hdd_3008_list> IT = {
    "BRCM_IT_PD",
    LOCATION_FIELD,
    4,
    sas3008_it_pd_sensor_num,
    itBytes,
    describeController,
    {IT_RULES, std::size(IT_RULES)},
    g_3008_it_hdd_head,
    g_3008_it_hdd_prev,
    g_3008_it_hdd_current,
    false,
    false,
    "Add 3008 record init",
    "Add 3008 record",
    "new drive",
    "Found 3008 record",
};

const drive_family<hdd_3008_list> RAID = {
    "BRCM_IR_PD",
    LOCATION_FIELD,
    4,
    sas3008_pd_sensor_num,
    raidBytes,
    describeController,
    {RAID_RULES, std::size(RAID_RULES)},
    g_raid_hdd_head,
    g_raid_hdd_prev,
    g_raid_hdd_current,
    false,
    false,
    "Add RAID record init",
    "Add RAID record",
    "new drive",
    "Found RAID record",
};

bool matches(const std::string& state, const char* word, match how) {
    return how == match::exact ? state == word : state.find(word) != std::string::npos;
}

template <class Node>
void raiseState(const drive_family<Node>& family, const std::string& state, drive_bytes bytes) {
    for (const state_rule& rule : family.rules)
        if (matches(state, rule.word, rule.raised))
            return sendDriveEvent(family.sensor, alert_assert, rule.event_type, bytes);
}

template <class Node>
void clearState(const drive_family<Node>& family, const std::string& stored,
                const std::string& state, drive_bytes bytes) {
    for (const state_rule& rule : family.rules)
        if (matches(stored, rule.word, rule.cleared) &&
            (rule.cleared_by == nullptr || state == rule.cleared_by))
            return sendDriveEvent(family.sensor, alert_deassert, rule.event_type, bytes);
}

template <class Node>
void logNewDrive(const drive_family<Node>& family, const char* title, const std::string& name) {
    if (family.new_text != nullptr)
        printCommandLog(title, family.new_text);
    printCommandLog(title, name);
}

template <class Node>
void addDrive(const drive_family<Node>& family, const record_fields& fields, bool first_pass) {
    const std::string& name = fields[family.name_field];
    const std::string& state = fields[family.state_field];
    const drive_bytes bytes = family.bytes(fields);

    Node* node = appendNode(family.head, family.prev);
    copyText(node->name, name);
    copyText(node->status, state);
    family.describe(*node, fields);

    if (first_pass) {
        logNewDrive(family, family.first_pass_title, name);
    } else {
        if (family.log_before_event)
            logNewDrive(family, family.new_title, name);
        sendDriveEvent(family.sensor, alert_deassert, event_presence, bytes);
        if (!family.log_before_event)
            logNewDrive(family, family.new_title, name);
    }
    raiseState(family, state, bytes);
}

template <class Node>
void updateDrive(const drive_family<Node>& family, Node& node, const record_fields& fields) {
    const std::string& state = fields[family.state_field];
    const drive_bytes bytes = family.bytes(fields);

    if (node.presence == 1) {
        sendDriveEvent(family.sensor, alert_deassert, event_presence, bytes);
        family.describe(node, fields);
        if (family.found_title != nullptr) {
            printCommandLog(family.new_title, "drive found");
            printCommandLog(family.found_title, node.name);
        }
    }
    node.checked = 0;
    node.presence = 0;
    const std::string stored = node.status;
    if (state == stored)
        return;
    raiseState(family, state, bytes);
    clearState(family, stored, state, bytes);
    copyText(node.status, state);
}

template <class Node>
void trackDrive(const drive_family<Node>& family, const list* item) {
    record_fields fields = splitFields(item->parm, ";:", STORAGE_RECORD_FIELDS);
    if (fields[0] != family.tag)
        return;
    fields.resize(STORAGE_RECORD_FIELDS);
    // Compared with what a node holds of the state, or a longer one would seem to change for ever.
    std::string& state = fields[family.state_field];
    state.resize(std::min(state.size(), sizeof(Node::status) - 1));

    if (static_first_init == 1 || (family.head == nullptr && family.empty_list_is_first_pass))
        return addDrive(family, fields, true);
    for (family.current = family.head; family.current != nullptr;
         family.current = family.current->next)
        if (fields[family.name_field] == family.current->name)
            return updateDrive(family, *family.current, fields);
    addDrive(family, fields, false);
}

} // namespace

void addStorageSELRecord(const list* item) {
    trackDrive(ONBOARD, item);
}

void addStorage3008ITSELRecord(const list* item) {
    trackDrive(IT, item);
}

void addStorageRaidSELRecord(const list* item) {
    trackDrive(RAID, item);
}
