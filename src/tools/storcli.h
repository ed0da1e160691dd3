// storcli: MegaRAID controllers and RAID cards, their volumes and their drives, in the words of
// versions 1 to 7.
//
// Models hold blanks, drives without enclosure leave a cell short, older versions lack columns: a
// table's cell is what stands below its label. Values are without ";" and ":".
#pragma once

#include "tools/program.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

// "storcli show"
struct storcli_controller {
    std::string number;
    std::string line; // its whole line, with the model
};

struct storcli_listing {
    bool told = false;                           // the number of controllers is
    int count = 0;                               // 0 for a number of more than three digits
    std::vector<storcli_controller> controllers; // every line that begins with a number
};

command_line storcliShow();
storcli_listing parseStorcliShow(std::string_view text);

// A row of a table of drives.
struct storcli_drive {
    std::string enclosure; // empty without one
    std::string slot;
    bool in_enclosure = false; // both are numbers, at least at the colon between them
    std::string device_id;
    std::string state;
    std::string size; // the number, without its unit
    std::string medium;

    std::string place() const {
        return enclosure + ":" + slot;
    }
};

// The drives of a MegaRAID controller that have a number as device ID, one a place:
// "storcli /cN /eall /sall show" for those in enclosures, "storcli /cN /sall show" for the others.
command_line storcliEnclosureDrives(const std::string& controller);
command_line storcliDrives(const std::string& controller);
std::vector<storcli_drive> parseStorcliDrives(std::string_view text);

// "storcli /cN show". Inner blanks of the controller's values are underscores.
struct storcli_volume {
    std::string number;
    std::string level;
    std::string state;
    std::string size; // the number, without its unit
};

struct storcli_card {
    bool whole = false; // the report of a controller, and none of a failure
    bool named = false; // tells one of these at least
    std::string interface;
    std::string bios;
    std::string firmware;
    std::string product;
    std::vector<storcli_volume> volumes;
    std::vector<storcli_drive> drives; // those in enclosures
    bool drives_whole = false;         // their list was read to its end
};

command_line storcliCard(const std::string& card);
storcli_card parseStorcliCard(std::string_view text);

// "storcli /cN/vall show all": by volume number
struct storcli_volume_facts {
    std::string os_name;
    std::vector<storcli_drive> members;
};

command_line storcliVolumes(const std::string& card);
std::map<std::string, storcli_volume_facts> parseStorcliVolumes(std::string_view text);

// "storcli /cN/eall/sall show all" and "storcli /cN/sall show all": by place, "252:0" or ":0".
// Inner blanks of the values are underscores.
struct storcli_drive_facts {
    std::string serial;
    std::string model;
    std::string wwn;
    std::string firmware;
};

command_line storcliEnclosureDriveFacts(const std::string& card);
command_line storcliDriveFacts(const std::string& card);
std::map<std::string, storcli_drive_facts> parseStorcliDriveFacts(std::string_view text);
