#pragma once

#include "storage/storage_items.h"

void collectSas3008(storage_items& items, const char* label);
