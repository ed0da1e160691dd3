#include "host/network_events.h"

#include "bmc/events.h"
#include "config/configuration.h"
#include "config/logs.h"
#include "text.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

network_list* g_network_head = nullptr;
network_list* g_network_prev = nullptr;
network_list* g_network_current = nullptr;

namespace {

constexpr std::size_t RECORD_PIECES = 13; // twelve fields and what follows the last separator
constexpr std::size_t ADDRESS_PIECES = 512;

enum record_field {
    FIELD_INDEX = 0,
    FIELD_NAME = 2,
    FIELD_IPV4 = 3,
    FIELD_IPV6 = 4,
    FIELD_LINK = 11
};

using record_fields = std::vector<std::string>;

void sendLinkEvent(const record_fields& fields, BYTE event) {
    if (nicStatusSel == 0)
        return;
    const int index = leadingInteger(fields[FIELD_INDEX], 0);
    selRecord record;
    record.sensor_type = sensor_type_network;
    record.alert_type = alert_network;
    record.event_type = event;
    record.event2 = static_cast<BYTE>(index);
    sendLanSEL(record);
}

void addInterface(const record_fields& fields) {
    printCommandLog("add network record ", fields[FIELD_NAME]);
    if (fields[FIELD_LINK] == NETWORK_UP)
        sendLinkEvent(fields, link_up);
    network_list* node = appendNode(g_network_head, g_network_prev);
    copyText(node->index, fields[FIELD_INDEX]);
    copyText(node->name, fields[FIELD_NAME]);
    copyText(node->ipv4, fields[FIELD_IPV4]);
    copyText(node->ipv6, fields[FIELD_IPV6]);
    copyText(node->if_link, fields[FIELD_LINK]);
}

network_list* findInterface(const std::string& name) {
    for (g_network_current = g_network_head; g_network_current != nullptr;
         g_network_current = g_network_current->next)
        if (g_network_current->name == name)
            break;
    return g_network_current;
}

void updateInterface(network_list& node, const record_fields& fields) {
    const std::string& link = fields[FIELD_LINK];
    if (link == node.if_link) {
        if (compareIPAddrs(fields[FIELD_IPV4], node.ipv4) == 1)
            copyText(node.ipv4, fields[FIELD_IPV4]);
        if (compareIPAddrs(fields[FIELD_IPV6], node.ipv6) == 1)
            copyText(node.ipv6, fields[FIELD_IPV6]);
        return;
    }
    if (link == NETWORK_UP)
        sendLinkEvent(fields, link_up);
    else if (link == NETWORK_DOWN)
        sendLinkEvent(fields, link_down);
    copyText(node.if_link, link);
}

} // namespace

void addNetworkSELRecord(const list* network_head) {
    for (const list* record = network_head; record != nullptr; record = record->next) {
        record_fields fields = splitFields(record->parm, ";", RECORD_PIECES);
        fields.resize(RECORD_PIECES); // a record that was cut lacks its last fields
        network_list* node = nullptr;
        if (g_network_head != nullptr && static_first_init == 0)
            node = findInterface(fields[FIELD_NAME]);
        if (node == nullptr)
            addInterface(fields);
        else
            updateInterface(*node, fields);
    }
}

int compareIPAddrs(std::string_view origin, std::string_view latest) {
    const std::vector<std::string> wanted = splitFields(origin, ",", ADDRESS_PIECES);
    const std::vector<std::string> there = splitFields(latest, ",", ADDRESS_PIECES);
    if (wanted.size() != there.size())
        return 1;
    for (const std::string& address : wanted)
        if (std::find(there.begin(), there.end(), address) == there.end())
            return 1;
    return 0;
}
