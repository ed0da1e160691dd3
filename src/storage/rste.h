// Software RAID volumes of the host and their members, by way of graid and smartctl.
//
// Records: Logical; provider; state; Intel RSTe; member count; level; drive indexes of the members,
// separated by ":"; volume index. And for each of its members, by name: HD; device: health: serial:
// firmware; volume index * 16 + drive index.
#pragma once

#include "storage/storage_items.h"

void collectRste(storage_items& items, const char* label);
