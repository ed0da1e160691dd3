// The five worker threads and the schedule of the two that collect.
#pragma once

// Creates the threads and waits until all have ended. Returns 0, or 1 when one can't be created
// (the error log names it).
int initThread();

// Creates the condition variables of all workers. Returns 0, or 1 at the first that fails, which
// standard output and the error log name.
int init_mutex();

// What the monitor does before its first cycle: probes the BMC.
void beginMonitoring();
// One cycle of the monitor without its waits. It ends early when a stop has come, after the
// collector that is at work.
void monitorPass();

// Thread bodies: every collector once per cycle, and a memory and network sample every second.
void* monitor_handler(void* arg);
void* memory_handler(void* arg);
