#pragma once

#include "storage/storage_items.h"

void collectRaidCards(storage_items& items, const char* label);
