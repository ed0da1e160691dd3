#include "host/network_events.h"

#include "bmc/events.h"
#include "config/configuration.h"
#include "config/logs.h"
#include "host/interface_facts.h"
#include "host/lan_record.h"
#include "text.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

network_list* g_network_head = nullptr;
network_list* g_network_prev = nullptr;
network_list* g_network_current = nullptr;

namespace {

constexpr std::size_t ADDRESS_PIECES = 512;

using record_fields = std::vector<std::string>;

// Whether the state may follow: the BMC has taken the event, or there is none to tell. A link of
// which nothing is known now is as it was.
bool tellLink(const record_fields& fields) {
    const std::string& link = fields[LAN_LINK];
    if (factsOf(fields[LAN_NAME]).link_unsure)
        return false;
    if (nicStatusSel == 0 || (link != NETWORK_UP && link != NETWORK_DOWN))
        return true;
    const int index = leadingInteger(fields[LAN_INDEX], 0);
    selRecord record;
    record.sensor_type = sensor_type_network;
    record.alert_type = alert_network;
    record.event_type = link == NETWORK_UP ? link_up : link_down;
    record.event2 = static_cast<BYTE>(index);
    return sendLanSEL(record) == 0;
}

void addInterface(const record_fields& fields) {
    printCommandLog("add network record ", fields[LAN_NAME]);
    const bool told = fields[LAN_LINK] != NETWORK_UP || tellLink(fields);
    network_list* node = appendNode(g_network_head, g_network_prev);
    copyText(node->index, fields[LAN_INDEX]);
    copyText(node->name, fields[LAN_NAME]);
    copyText(node->ipv4, fields[LAN_IPV4]);
    copyText(node->ipv6, fields[LAN_IPV6]);
    copyText(node->if_link, told ? fields[LAN_LINK] : NETWORK_DOWN);
}

network_list* findInterface(const std::string& name) {
    for (g_network_current = g_network_head; g_network_current != nullptr;
         g_network_current = g_network_current->next)
        if (g_network_current->name == name)
            break;
    return g_network_current;
}

void updateInterface(network_list& node, const record_fields& fields) {
    const std::string& link = fields[LAN_LINK];
    if (link == node.if_link) {
        if (compareIPAddrs(fields[LAN_IPV4], node.ipv4) == 1)
            copyText(node.ipv4, fields[LAN_IPV4]);
        if (compareIPAddrs(fields[LAN_IPV6], node.ipv6) == 1)
            copyText(node.ipv6, fields[LAN_IPV6]);
        return;
    }
    if (tellLink(fields))
        copyText(node.if_link, link);
}

} // namespace

void addNetworkSELRecord(const list* network_head) {
    for (const list* record = network_head; record != nullptr; record = record->next) {
        record_fields fields = splitFields(record->parm, ";", LAN_FIELDS);
        fields.resize(LAN_FIELDS);
        network_list* node = nullptr;
        if (g_network_head != nullptr && static_first_init == 0)
            node = findInterface(fields[LAN_NAME]);
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
