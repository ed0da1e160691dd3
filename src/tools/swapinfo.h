// "swapinfo -k": the devices that the host swaps to.
#pragma once

#include "tools/df.h"

command_line swapinfo();

// Whether a line of the table is of this device.
bool isSwap(const space_table& table, std::string_view device);
