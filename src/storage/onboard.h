#pragma once

#include "storage/storage_items.h"

void collectOnboard(storage_items& items, const char* label);
