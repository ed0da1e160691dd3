#pragma once

#include "storage/storage_items.h"

void collectRste(storage_items& items, const char* label);
