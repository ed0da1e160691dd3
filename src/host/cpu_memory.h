// CPU and memory utilisation.
#pragma once

#include "system_info.h"

#include <cstdint>

constexpr int CPU_STATES = 5; // user, nice, system, interrupt, idle

// Uploads the non-idle share since the previous call (parameter 196). Returns 0.
int getCPUUsage();
// Percent, 0.0 when the counters can't be read.
float cpu_state();
// Stores new - old (a negative difference as the signed 32-bit difference of the low halves),
// copies new over old, returns the sum, or 1 when that is 0.
long percentages(int cnt, std::int64_t* new_counts, std::int64_t* old_counts, std::int64_t* diffs);

// The samples since the latest upload, a line of the memory script each: first, last and cursor,
// under a guard of getMemoryUsage's own.
extern list* memory_head;
extern list* memory_prev;
extern list* memory_current;

// Samples memory use; with sendCmd 1 uploads the mean of all samples (parameter 197) and starts
// afresh. Any thread. Returns 0.
int getMemoryUsage(int sendCmd);
