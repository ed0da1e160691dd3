// The walk over the kernel's interfaces, which both network collectors make.
#pragma once

#include "platform/platform.h"

#include <functional>
#include <string>

// Calls `take` with every interface that is no loopback, from row `rows` down to 1, until it
// returns false. A row that can't be read ends the walk too, with "read sysctl" and the system's
// error text on standard error.
void walkInterfaces(int rows,
                    const std::function<bool(int row, const platform::ifmibdata& data)>& take);

std::string interfaceName(const platform::ifmibdata& data);
