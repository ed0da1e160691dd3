// The walk over the kernel's interfaces, which both network collectors make.
#pragma once

#include "platform/platform.h"

#include <optional>
#include <string>
#include <vector>

struct interface_row {
    int row = 0;
    std::string name;
    bool up = false; // configured so, with or without a link
    platform::ifmibdata data{};
};

// The interfaces that are no loopback, from the highest row down, at most `most`. A row that does
// not exist is passed over; one that can't be read ends the walk, with "read sysctl" and the
// system's error text on standard error. Nothing when the kernel doesn't tell the number of rows.
std::optional<std::vector<interface_row>> walkInterfaces(std::size_t most);
