// Link-up and link-down events from one inventory pass to the next.
#pragma once

#include "system_info.h"

#include <string_view>

struct network_list {
    unsigned long no;
    char parm[RECORD_SIZE];
    char index[5];
    char name[RECORD_SIZE];
    char ipv4[RECORD_SIZE];
    char ipv6[RECORD_SIZE];
    char if_link[5];
    network_list* next;
};

extern network_list* g_network_head;
extern network_list* g_network_prev;
extern network_list* g_network_current;

// Compares the normalised records with the state kept by interface name and sends the events.
// Monitor thread or one-shot process only.
void addNetworkSELRecord(const list* network_head);

// 1 when the comma-separated lists differ: another number of pieces, or a piece of `origin` that
// `latest` lacks.
int compareIPAddrs(std::string_view origin, std::string_view latest);
