// One record of twelve fields per network interface.
#pragma once

#include "system_info.h"

#include <string>

// Collects, prints, logs and uploads (parameters 194 and 195), then raises link events. Returns 0.
int getLan();

// The "%02x:..." text of the interface's link-level address into an 18-byte buffer; 1 when there
// is one, else 0 with the buffer empty.
int getMac(const std::string& ifname, char (&macaddrstr)[18]);

// Sorts by the first 12 characters of the MAC field, equal ones in their order; swap exchanges two
// records whole.
void lanSort(list* start);
void swap(list* a, list* b);
