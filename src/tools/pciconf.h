// "pciconf -lv": the devices of the PCI buses. A device begins in the first column with its name
// and "@"; the indented lines "vendor = '...'" and "device = '...'" follow, if they are known.
#pragma once

#include "tools/program.h"

#include <map>
#include <string>
#include <string_view>

struct pci_device {
    std::string vendor, device; // without their quotes
};

command_line pciconfCommand();

// By name.
std::map<std::string, pci_device> parsePciconf(std::string_view text);
