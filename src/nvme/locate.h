// The locate LED of an NVMe drive.
#pragma once

#include "system_info.h"

// Finds the backplane position whose serial number is the device's and sends the locate request
// with `index`. Returns 0 whether or not a position matched; a device that can't be opened or read
// ends the process with status 1.
int locateManage(int index, const char* deviceName);

// The completion code of one locate request.
BYTE locateLed(int index, int aoc, int slot, int group);
