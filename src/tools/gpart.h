// "gpart show -p": the partitions by name, with sizes such as "(1.0G)".
#pragma once

#include "tools/program.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

command_line gpartShow();

// Bytes by partition, as exact as the sizes are printed; a partition without a size is left out.
using partition_sizes = std::map<std::string, std::uint64_t, std::less<>>;
partition_sizes parseGpart(std::string_view text);
