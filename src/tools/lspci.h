// "lspci -v": the controllers that disks hang on.
#pragma once

#include "tools/program.h"

#include <string>
#include <string_view>

// Names without ";" and ":"; empty where there is none.
struct disk_controllers {
    std::string usb;
    std::string ata;
};

command_line lspciVerbose();

// The first device line with USB and the first with ATA in it. Details of devices don't count.
disk_controllers parseLspci(std::string_view text);
