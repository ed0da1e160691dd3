// The locate LED of an NVMe drive.
#pragma once

#include "system_info.h"

// Finds the backplane position whose serial number is the device's and sends the locate request
// with `index`. Returns 0 whether or not a position matched; 1 when the device can't be opened or
// read, which the error log tells (a one-shot run would end with status 1).
int locateManage(int index, const char* deviceName);

// The completion code of one locate request.
BYTE locateLed(int index, int aoc, int slot, int group);
