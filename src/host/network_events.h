// Link-up and link-down events from one inventory pass to the next.
#pragma once

#include "system_info.h"

#include <string_view>

// Link states of the LAN and network usage records.
constexpr const char* NETWORK_UP = "up";
constexpr const char* NETWORK_DOWN = "down";

// State of an interface, kept by its name from its first appearance until the process ends.
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

// The state list: first node, last node, search cursor. No lock: monitor thread or one-shot
// process.
extern network_list* g_network_head;
extern network_list* g_network_prev;
extern network_list* g_network_current;

// Compares the normalised records with the state kept by interface name and sends the events.
// Monitor thread or one-shot process only.
void addNetworkSELRecord(const list* network_head);

// 1 when the comma-separated lists differ: another number of pieces, or a piece of `origin` that
// `latest` lacks.
int compareIPAddrs(std::string_view origin, std::string_view latest);
