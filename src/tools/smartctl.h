// smartctl: identity, health and temperature of one drive, in the words of versions 5.40 to 7.4.
#pragma once

#include "tools/program.h"

#include <string>
#include <string_view>

struct smart_facts {
    bool recognised = false; // the text is an answer of smartctl at all
    // Values without ";" and ":"; empty where the answer has none.
    std::string serial;
    std::string firmware;
    std::string rotation;    // as printed, "7200 rpm" or "Solid State Device"
    std::string temperature; // raw value of the attribute "194 Temperature_Celsius"
    bool unknown_usb_bridge = false;
    // What is said of the health: the values of the line with the result and of the two that follow
    // it, joined by blanks; an empty line ends them, and where the attribute section begins.
    std::string health;
    bool health_whole = false; // what ends it was read too
};

command_line smartctlDisk(const std::string& disk);  // smartctl -i -H -A /dev/DISK
command_line smartctlDrive(const std::string& disk); // smartctl -i -H /dev/DISK

// `drop_warning`: the line that says that the result rests on an attribute check does not count.
smart_facts parseSmartctl(std::string_view text, bool drop_warning = false);
