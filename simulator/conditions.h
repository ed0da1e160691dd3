// Conditions that a test waits for instead of sleeping.
#pragma once

#include "bmc.h"

#include <functional>

namespace bmcsim {

using Condition = std::function<bool(Bmc&)>;

// Reads "[not] CONDITION"; `rest` is what followed the seconds. Returns an error text, empty when
// all is well. Relative conditions ("next ...") count from this call on.
std::string parseCondition(Bmc& bmc, const std::string& rest, Condition& condition);
const char* conditionUsage();

} // namespace bmcsim
