// Everything in which the kinds of drives differ: how a record tells of its drive, which events its
// state raises, and in which words the logs tell of it.
#pragma once

#include "storage/drive_state.h"
#include "storage/storage_items.h"

#include <set>
#include <string>
#include <vector>

// A record's fields between ";" and ":".
using record_fields = std::vector<std::string>;
constexpr std::size_t STORAGE_RECORD_FIELDS = 18; // further ones are ignored

enum class match { exact, contains };

// A state word: the event that is asserted when the state becomes one that matches it, and
// deasserted when a told state that matches it changes. In a table the first match counts.
struct state_rule {
    const char* word;
    BYTE event_type;
    match raised;
    match cleared;
    const char* cleared_by = nullptr; // the only new state that clears it; null: any
};

// The last two bytes of a drive's event record.
struct drive_bytes {
    BYTE event2;
    BYTE event3;
};

struct drive_family {
    const char* tag = ""; // field 0 of its records
    std::size_t name_field = 0;
    std::size_t state_field = 0;
    std::size_t index_field = 0;  // that says where the drive sits; 0: its name does
    std::size_t serial_field = 0; // of a drive whose name may change; 0: it does not
    std::vector<state_rule> rules;

    drive_bytes (*bytes)(const record_fields& fields) = nullptr;
    // `previous`: the bytes of the drive reported missing before, zeros for the first
    drive_bytes (*missing_bytes)(const hdd_list& node, drive_bytes previous) = nullptr;
    void (*describe)(hdd_list& node, const record_fields& fields) = nullptr; // index or location

    hdd_list** head = nullptr;
    hdd_list** prev = nullptr;

    const char* first_pass_title = "";
    const char* new_title = "";
    const char* new_text = nullptr;    // a line of its own before the drive's name; null: none
    const char* found_title = nullptr; // of a returning drive's name; null: nothing is logged
    const char* missing_text = "";     // under the title "checkDrivePresence"

    BYTE sensor = 0xFF;
    BYTE missing_sensor = 0xFF;
    bool empty_list_is_first_pass = false; // a list that is empty in a later pass counts as new
    bool log_before_event = false; // a new or missing drive is logged before its presence event
    bool listed_once = false; // a pass has told of all its drives: what is not known then is new
    std::set<std::string> open_then; // but for these, which were there and told nothing yet
};

// By drive_kind.
extern drive_family drive_families[DRIVE_KINDS];
