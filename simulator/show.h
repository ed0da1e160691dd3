// What a person wants to see: the server as its BMC knows it.
#pragma once

#include "bmc.h"

namespace bmcsim {

// Lines of one section; none when there is no section of that name.
Lines showSection(Bmc& bmc, const std::string& section);
// Every section that has something to say, with headings.
Lines showAll(Bmc& bmc);
// "os agent time ..." for usage texts.
std::string sectionNames();

// The last values of a selector, one a line, escaped: the items of a list selector, the value of
// another; 207 and 208 with their index in front.
Lines rawValues(const Bmc& bmc, uint32_t selector);
// The event log in words.
Lines selLines(Bmc& bmc);
// Requests and bytes by command and selector.
Lines trafficLines(const Bmc& bmc);

} // namespace bmcsim
