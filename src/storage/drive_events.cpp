#include "storage/drive_events.h"

#include "bmc/events.h"
#include "config/logs.h"
#include "storage/drive_family.h"
#include "text.h"

#include <algorithm>
#include <utility>

namespace {

// Returns whether the BMC took it.
bool sendDriveEvent(BYTE sensor, BYTE alert, BYTE event_type, drive_bytes bytes) {
    selRecord record;
    record.sensor_type = sensor_type_drive;
    record.sensor_num = sensor;
    record.alert_type = alert;
    record.event_type = event_type;
    record.event2 = bytes.event2;
    record.event3 = bytes.event3;
    return sendSmartSEL(record) == 0;
}

// Serial number and place of each drive of the pass under way, where its name tells neither.
std::set<std::pair<std::string, std::string>> seen;

// A drive's record on its way through its family's handler.
struct drive_record {
    drive_family& family;
    const record_fields& fields;
    bool state_known;
    bool certain; // that it is there, and where

    const std::string& name() const {
        return fields[family.name_field];
    }
    const std::string& state() const {
        return fields[family.state_field];
    }
    bool send(BYTE alert, BYTE event_type) const {
        return sendDriveEvent(family.sensor, alert, event_type, family.bytes(fields));
    }
};

bool matches(const std::string& state, const char* word, match how) {
    return how == match::exact ? state == word : state.find(word) != std::string::npos;
}

// What a state asserts.
const state_rule* ruleOf(const drive_family& family, const std::string& state) {
    for (const state_rule& rule : family.rules)
        if (matches(state, rule.word, rule.raised))
            return &rule;
    return nullptr;
}

// Tells what a state had asserted and a new one clears. True when there was nothing to tell or the
// BMC took it.
bool clearState(const drive_record& record, const std::string& told, const std::string& state) {
    for (const state_rule& rule : record.family.rules)
        if (matches(told, rule.word, rule.cleared) &&
            (rule.cleared_by == nullptr || state == rule.cleared_by))
            return record.send(alert_deassert, rule.event_type);
    return true;
}

// The second half of a change from the told state to `state`.
bool finishChange(const drive_record& record, hdd_list& node, const std::string& state) {
    if (!clearState(record, node.status, state))
        return false;
    copyText(node.status, state);
    copyText(node.raised, "");
    return true;
}

void tellState(const drive_record& record, hdd_list& node) {
    if (!record.state_known || (*node.raised != '\0' && !finishChange(record, node, node.raised)) ||
        record.state() == node.status)
        return;
    if (const state_rule* rule = ruleOf(record.family, record.state())) {
        if (!record.send(alert_assert, rule->event_type))
            return;
        copyText(node.raised, record.state());
    }
    finishChange(record, node, record.state());
}

void logNewDrive(const drive_record& record, const char* title) {
    if (record.family.new_text != nullptr)
        printCommandLog(title, record.family.new_text);
    printCommandLog(title, record.name());
}

bool isPlaced(const drive_family& family, std::string_view index) {
    return family.index_field == 0 || wholeNumber(index).has_value();
}

bool tellArrival(const drive_record& record, hdd_list& node) {
    if (!record.certain || !record.send(alert_deassert, event_presence))
        return false;
    node.presence = drive_present;
    return true;
}

void noteSerial(const drive_record& record, hdd_list& node) {
    const drive_family& family = record.family;
    const std::string& serial = record.fields[family.serial_field];
    if (family.serial_field == 0 || serial.empty() || serial == "N/A")
        return;
    copyText(node.serial, serial);
    seen.insert({node.serial, record.fields[family.index_field].substr(0, sizeof node.index - 1)});
}

bool isFirstPass(const drive_family& family, const std::string& name) {
    return static_first_init == 1 || !family.listed_once || family.open_then.count(name) != 0 ||
           (family.empty_list_is_first_pass && *family.head == nullptr);
}

void addDrive(const drive_record& record) {
    const drive_family& family = record.family;
    const bool first_pass = isFirstPass(family, record.name());
    hdd_list& node = *appendNode(*family.head, *family.prev);
    copyText(node.name, record.name());
    family.describe(node, record.fields);
    noteSerial(record, node);
    node.presence = first_pass ? drive_present : drive_untold;

    if (first_pass || family.log_before_event)
        logNewDrive(record, first_pass ? family.first_pass_title : family.new_title);
    const bool told = first_pass || tellArrival(record, node);
    if (!first_pass && !family.log_before_event)
        logNewDrive(record, family.new_title);
    if (told)
        tellState(record, node);
}

void updateDrive(const drive_record& record, hdd_list& node) {
    const drive_family& family = record.family;
    const bool was_missing = node.presence == drive_missing;
    node.checked = 0;
    noteSerial(record, node);
    if (node.presence == drive_gone) // nobody was told
        node.presence = drive_present;
    if (node.presence != drive_present) {
        if (!tellArrival(record, node))
            return;
        family.describe(node, record.fields);
        if (was_missing && family.found_title != nullptr) {
            printCommandLog(family.new_title, "drive found");
            printCommandLog(family.found_title, node.name);
        }
    } else if ((record.certain || record.state_known) && !isPlaced(family, node.index)) {
        family.describe(node, record.fields);
    }
    tellState(record, node);
}

hdd_list* findDrive(const drive_family& family, const std::string& name) {
    hdd_list* node = *family.head;
    while (node != nullptr && name != node->name)
        node = node->next;
    return node;
}

void addRecord(drive_kind kind, const record_fields& fields, bool state_known, bool certain) {
    drive_family& family = drive_families[static_cast<std::size_t>(kind)];
    const drive_record record{family, fields, state_known, certain};
    hdd_list* node = findDrive(family, record.name());
    if (node == nullptr && (family.index_field != 0 || record.certain))
        addDrive(record);
    else if (node != nullptr && node->checked == 1)
        updateDrive(record, *node);
}

// Such a record stands for a place that its drive has left: it says nothing of the place it names.
bool isAbsent(const record_fields& fields) {
    constexpr const char* MISSING = "Missing";
    return fields[drive_families[static_cast<std::size_t>(drive_kind::it)].state_field] == MISSING;
}

void addStorageSELRecord(const record_fields& fields, bool state_known, bool certain) {
    addRecord(drive_kind::onboard, fields, state_known, certain);
}

void addStorage3008ITSELRecord(const record_fields& fields, bool state_known, bool certain) {
    if (!isAbsent(fields))
        addRecord(drive_kind::it, fields, state_known, certain);
}

void addStorageRaidSELRecord(const record_fields& fields, bool state_known, bool certain) {
    if (!isAbsent(fields))
        addRecord(drive_kind::raid, fields, state_known, certain);
}

// By drive_kind.
constexpr void (*HANDLERS[DRIVE_KINDS])(const record_fields& fields, bool state_known,
                                        bool certain) = {
    addStorageSELRecord, addStorage3008ITSELRecord, addStorageRaidSELRecord};

// A drive whose arrival was never told is not told missing either, nor one that sits where it sat
// under another name. The event is sent until it is taken, the line written once.
void reportMissing(const drive_family& family, hdd_list& node, drive_bytes bytes) {
    if (node.presence == drive_untold || seen.count({node.serial, node.index}) != 0) {
        node.presence = drive_missing;
        return;
    }
    const bool is_news = node.presence == drive_present;
    if (is_news && family.log_before_event)
        printCommandLog("checkDrivePresence", family.missing_text);
    const bool taken = sendDriveEvent(family.missing_sensor, alert_assert, event_presence, bytes);
    node.presence = taken ? drive_missing : drive_gone;
    if (is_news && !family.log_before_event)
        printCommandLog("checkDrivePresence", family.missing_text);
}

} // namespace

void resetDrivePresenceCheck() {
    seen.clear();
    for (const drive_family& family : drive_families)
        for (hdd_list* node = *family.head; node != nullptr; node = node->next)
            node->checked = 1;
}

void checkDrivePresence(const storage_items& items) {
    for (std::size_t kind = 0; kind < DRIVE_KINDS; ++kind) {
        const drive_family& family = drive_families[kind];
        if (!items.allListed(static_cast<drive_kind>(kind)))
            continue;
        drive_bytes bytes{};
        for (hdd_list* node = *family.head; node != nullptr; node = node->next) {
            if (node->checked != 1 || node->presence == drive_missing ||
                items.open().count(node->name) != 0)
                continue;
            bytes = family.missing_bytes(*node, bytes);
            reportMissing(family, *node, bytes);
        }
    }
    noteListedFamilies(items);
}

void noteListedFamilies(const storage_items& items) {
    for (std::size_t kind = 0; kind < DRIVE_KINDS; ++kind) {
        drive_family& family = drive_families[kind];
        if (!items.allListed(static_cast<drive_kind>(kind)))
            continue;
        std::set<std::string> still_open;
        for (const std::string& name : items.open())
            if (!family.listed_once || family.open_then.count(name) != 0)
                still_open.insert(name);
        family.open_then = std::move(still_open);
        family.listed_once = true;
    }
}

void trackDrive(const list& item, bool state_known, bool certain) {
    record_fields fields = splitFields(item.parm, ";:", STORAGE_RECORD_FIELDS);
    fields.resize(STORAGE_RECORD_FIELDS);
    for (std::size_t kind = 0; kind < DRIVE_KINDS; ++kind) {
        const drive_family& family = drive_families[kind];
        if (fields[0] != family.tag)
            continue;
        // Compared with what a node holds of the state, or a longer one would seem to change for
        // ever.
        std::string& state = fields[family.state_field];
        state.resize(std::min(state.size(), sizeof(hdd_list::status) - 1));
        HANDLERS[kind](fields, state_known, certain);
        return;
    }
}
