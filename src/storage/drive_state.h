// What the agent remembers of every drive between two collections, for its events. The lists
// belong to the thread that collects; there is no lock.
//
// An event counts as told when the BMC has taken it, and only then what is remembered changes: the
// next pass that reaches the BMC tells what is still true.
#pragma once

#include "system_info.h"

// What the BMC was told of a drive's presence.
enum drive_presence : int {
    drive_present = 0,
    drive_missing = 1,
    drive_untold = 2, // a new drive, whose arrival the BMC has not taken yet
    drive_gone = 3,   // one whose absence the BMC has not taken yet
};

// A node is created by a drive's first record and lives until the process ends.
struct hdd_list {
    char name[RECORD_SIZE]; // device path (/dev/ada0) or location (C0E2S5), the key
    char status[50];        // the last state that was told whole, the first 49 characters
    char raised[50];        // a state that was asserted, while what it clears is still to be told
    char index[5];          // onboard: the drive index, the first 4 characters
    char serial[32];        // onboard: what was told of it last, the first 31 characters
    int controller, enclosure, slot; // behind a controller: the numbers in the location
    int presence;
    int checked; // 1: not seen yet in the pass under way
    hdd_list* next;
};

// First and last node of each list, in the order of first appearance.
extern hdd_list *g_hdd_head, *g_hdd_prev;
extern hdd_list *g_3008_it_hdd_head, *g_3008_it_hdd_prev;
extern hdd_list *g_raid_hdd_head, *g_raid_hdd_prev;
