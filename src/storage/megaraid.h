#pragma once

#include "storage/storage_items.h"

void collectMegaraid(storage_items& items, const char* label);

void collectLsi(storage_items& items, const char* label);
