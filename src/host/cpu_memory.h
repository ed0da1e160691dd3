// CPU and memory utilisation.
#pragma once

#include "platform/platform.h"
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

// The samples since the latest upload, the newest 600 at most, a whole percentage and a newline
// each: first, last and cursor, under a guard of getMemoryUsage's own.
extern list* memory_head;
extern list* memory_prev;
extern list* memory_current;

// What is neither inactive nor free, in whole percent of the physical memory (which is not 0);
// negative when more is inactive and free than there is. Inactive and free are taken as top of
// FreeBSD 10.1 shows them: in kilobytes, from 100000 on in megabytes, then in gigabytes, rounded.
int memoryInUse(const platform::memory_amounts& amounts);

// Samples memory use; with sendCmd 1 uploads the mean of all samples (parameter 197) and starts
// afresh. Any thread. Returns 0.
int getMemoryUsage(int sendCmd);
