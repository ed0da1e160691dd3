// One record of twelve fields per network interface.
#pragma once

#include "platform/platform.h"
#include "system_info.h"

#include <string>
#include <vector>

// Collects, prints, logs and uploads (parameters 194 and 195), then raises link events. Nothing is
// told when a stop came meanwhile. Returns 0.
int getLan();

// The interface's link-level address as "%02x:..." text, empty when there is none of six bytes.
std::string getMac(const std::vector<platform::interface_address>& addresses,
                   const std::string& ifname);

// Sorts by the first 12 characters of the MAC field, equal ones in their order.
void lanSort(list*& head, list*& prev);
