// camcontrol: the buses on which disks sit, and what an ATA disk says of itself.
#pragma once

#include "tools/program.h"

#include <string>
#include <string_view>
#include <vector>

// "camcontrol devlist": a device a line, "<description> at scbus0 target 0 lun 0 (pass0,ada0)".
struct cam_device {
    std::string bus;                // number of the scbus; empty: the line tells none
    std::vector<std::string> words; // of letters, digits and "_" behind the description
};

command_line camcontrolDevlist();
std::vector<cam_device> parseDevlist(std::string_view text);

// "camcontrol identify DISK"
struct identify_facts {
    bool has_model = false; // false: no answer of an ATA disk
    std::string model;      // without ";" and ":"
    bool trim = false;      // discards blocks: a solid state drive
};

command_line camcontrolIdentify(const std::string& disk);
identify_facts parseIdentify(std::string_view text);
