// sas3ircu: SAS3008 controllers, their volumes and their drives.
#pragma once

#include "tools/program.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// "sas3ircu list"
struct sas3ircu_listing {
    bool told = false;                // the table of adapters is there
    std::vector<std::string> sas3008; // numbers of the SAS3008 controllers
};

command_line sas3ircuList();
sas3ircu_listing parseSas3ircuList(std::string_view text);

// "sas3ircu N display". Values are without blanks, ";" and ":", and empty where the display has
// none: a missing drive has no size, model and firmware. Sizes are in MB.
struct sas_place {
    std::string enclosure;
    std::string slot;
};

struct sas_volume {
    std::string id;
    std::string status; // with its code, "Okay(OKY)"
    std::string level;
    std::optional<std::uint64_t> size;
    std::vector<sas_place> members; // those under its own title "IR volume n"
};

struct sas_drive {
    sas_place place;
    std::string state; // with its code, "Optimal(OPT)"
    std::optional<std::uint64_t> size;
    std::string manufacturer;
    std::string model;
    std::string firmware;
    std::string serial;
    std::string type; // "SATA_HDD"
};

struct sas_display {
    bool whole = false; // tells of RAID support, and of the drives to their end
    std::string type;
    std::string bios;
    std::string firmware;
    std::string raid_support; // "Yes" in IR mode, "No" in IT mode
    std::string channel;      // with its blanks
    std::vector<sas_volume> volumes;
    std::vector<sas_drive> drives; // enclosures left out
};

command_line sas3ircuDisplay(const std::string& controller);
sas_display parseSas3ircuDisplay(std::string_view text);
