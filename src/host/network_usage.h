// Network utilisation per interface.
#pragma once

#include "system_info.h"

// A sample: received plus sent bytes of the interface that `parm` names.
struct network_usage_list {
    unsigned long no;
    char parm[RECORD_SIZE];
    unsigned long second; // in which it was taken, counted in calls of getNetworkUsage
    network_usage_list* next;
};

// The samples since the latest upload, in time order, of the newest 600 seconds at most: first and
// last, under a guard of getNetworkUsage's own.
extern network_usage_list* network_head;
extern network_usage_list* network_prev;

// Forgets the samples: after a pause they would count it as one second.
void dropNetworkSamples();

// Samples every interface's byte count; with sendCmd 1 uploads the mean utilisation (parameters
// 200 and 201) and starts afresh. Sampling from any thread, uploading from the collecting thread
// or a one-shot process only. Returns 0.
int getNetworkUsage(int sendCmd);
