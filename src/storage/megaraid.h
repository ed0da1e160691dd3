// Drives behind MegaRAID controllers, by way of storcli and smartctl. They raise no events.
//
// Records: LSI; device: health: serial: firmware: slot, and for collectLsi without the slot.
// Health is OK, PredictiveFailureAnalysis, Fail or N/A.
#pragma once

#include "storage/storage_items.h"

// Adds the drives of the controllers whose model says so; the device is /dev/pass and storcli's
// device ID.
void collectMegaraid(storage_items& items, const char* label);

// Adds the drives of every controller that storcli counts; the device is storcli's device ID.
void collectLsi(storage_items& items, const char* label);
