// Storage and NVMe records as tables.
#pragma once

#include "table.h"

namespace bmcsim {

// One table for each kind of record among the items (disks, partitions, controllers, volumes,
// drives), then the items that are none of these, escaped.
Lines storageTables(const std::vector<std::string>& items);
Lines nvmeTable(const std::vector<std::string>& items);

} // namespace bmcsim
