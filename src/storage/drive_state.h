// What the agent remembers of every drive between two collections, for its events. The lists
// belong to the thread that collects; there is no lock.
#pragma once

#include "system_info.h"

// A node is created by a drive's first record and lives until the process ends.
struct hdd_list {           // onboard drive, or member of a software RAID volume
    char index[5];          // drive index, the first 4 characters
    char name[RECORD_SIZE]; // device path, the key
    char status[50];        // last health state, the first 49 characters
    int presence;           // 1: reported missing
    int checked;            // 1: not seen yet in the pass under way
    int type;               // 0
    hdd_list* next;
};

struct hdd_3008_list {      // drive behind a controller
    char name[RECORD_SIZE]; // location such as C0E2S5, the key
    char status[50];        // last detail state, the first 49 characters
    int mapping_index;      // not used
    int controller;
    int enclosure;
    int slot;
    int presence;
    int checked;
    int type; // 1
    hdd_3008_list* next;
};

constexpr int drive_type_onboard = 0;
constexpr int drive_type_controller = 1;

// Head, last node and search cursor of each list.
extern hdd_list *g_hdd_head, *g_hdd_prev, *g_hdd_current;
extern hdd_3008_list *g_3008_it_hdd_head, *g_3008_it_hdd_prev, *g_3008_it_hdd_current;
extern hdd_3008_list *g_raid_hdd_head, *g_raid_hdd_prev, *g_raid_hdd_current;

// The last two bytes of a drive's event record.
struct drive_bytes {
    BYTE event2;
    BYTE event3;
};

// slot; controller in bits 7:6 and enclosure in bits 5:0. Bits that don't fit are lost.
drive_bytes itDriveBytes(int controller, int enclosure, int slot);
// controller in bits 7:4 and slot in bits 3:0; 0xFF.
drive_bytes raidDriveBytes(int controller, int slot);

// Sends one drive event; a failure is logged and nothing more.
void sendDriveEvent(BYTE sensor, BYTE alert, BYTE event_type, drive_bytes bytes);
