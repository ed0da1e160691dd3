// The five worker threads and the schedule of the two that collect.
#pragma once

// Creates the threads and waits until all have ended. Returns 0, or 1 when one can't be created
// (the error log names it).
int initThread();

// Thread bodies: every collector once per cycle, and a memory and network sample every second.
void* monitor_handler(void* arg);
void* memory_handler(void* arg);
