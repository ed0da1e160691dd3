#include "host/network_inventory.h"

#include "bmc/report.h"
#include "config/logs.h"
#include "host/interface_facts.h"
#include "host/interface_walk.h"
#include "host/lan_record.h"
#include "host/network_events.h"
#include "host/network_lookups.h"
#include "state/flags.h"
#include "text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <netdb.h>

namespace {

using addresses = std::vector<platform::interface_address>;

constexpr std::size_t MAX_LAN_RECORDS = 31;
constexpr std::size_t MAC_KEY_LENGTH = 12;
constexpr const char* LABEL = "Get Lan ->";

constexpr list_report LAN_REPORT = {
    "Lan items %d%d\n", "Lan : ", "Lan items ->", "Lan ->",
    PARM_LAN_COUNT,     PARM_LAN, true,           replaceEmptyToNAExceptDoubleColon};

// Empty when the address has no numeric text.
std::string numericHost(const sockaddr_storage& address, socklen_t length) {
    char text[NI_MAXHOST];
    if (getnameinfo(reinterpret_cast<const sockaddr*>(&address), length, text, sizeof text, nullptr,
                    0, NI_NUMERICHOST) != 0)
        return "";
    return text;
}

// The IPv4 addresses of an interface and their distinct netmasks.
void putIpv4(const addresses& all, lan_fields& fields) {
    std::vector<std::string> ipv4, netmasks;
    for (const platform::interface_address& entry : all) {
        if (entry.name != fields[LAN_NAME] || entry.family != platform::address_family::inet ||
            entry.address_length != sizeof(sockaddr_in))
            continue;
        const std::string netmask = numericHost(entry.netmask, sizeof(sockaddr_in));
        if (netmask.empty()) {
            printErrLog(LABEL, "getnameinfo netmask error");
            continue;
        }
        if (joinedList(netmasks).find(netmask) == std::string::npos)
            netmasks.push_back(netmask);
        const std::string address = numericHost(entry.address, entry.address_length);
        if (address.empty())
            printErrLog(LABEL, "getnameinfo IP error");
        else
            ipv4.push_back(address);
    }
    fields[LAN_IPV4] = joinedList(ipv4);
    fields[LAN_NETMASKS] = joinedList(netmasks);
}

std::string recordOf(const interface_row& row, const addresses& all) {
    const interface_facts& facts = factsOf(row.name);
    lan_fields fields;
    fields[LAN_INDEX] = std::to_string(row.row);
    fields[LAN_MAC] = getMac(all, row.name);
    fields[LAN_NAME] = row.name;
    putIpv4(all, fields);
    fields[LAN_IPV6] = getIPv6(row.name);
    fields[LAN_GATEWAY] = getGateway(row.name);
    fields[LAN_HOST] = getFQDN();
    fields[LAN_DNS] = getDNS(row.name);
    fields[LAN_SPEED] = std::to_string(facts.speed);
    fields[LAN_DESCRIPTION] = getDescription(row.name);
    fields[LAN_LINK] = facts.link_up ? NETWORK_UP : NETWORK_DOWN;
    return lanRecord(fields);
}

// Appends a record per interface, the highest row first. Returns their number.
int collect(list*& head, list*& prev) {
    const auto rows = walkInterfaces(MAX_LAN_RECORDS);
    if (!rows.has_value())
        printErrLog("Lan ->", "command not found");
    if (!rows.has_value() || rows->empty())
        return 0;
    addresses all;
    if (platform::interface_addresses(all) != 0) {
        printErrLog(LABEL, "getifaddrs error");
        return 0;
    }
    askNetworkTools(*rows);
    for (const interface_row& row : *rows) {
        list* node = appendNode(head, prev);
        node->no = row.row;
        copyText(node->parm, recordOf(row, all));
    }
    return static_cast<int>(rows->size());
}

std::string macKey(const list* node) {
    std::vector<std::string> fields = splitFields(node->parm, ";", LAN_MAC + 1);
    fields.resize(LAN_MAC + 1);
    return fields[LAN_MAC].substr(0, MAC_KEY_LENGTH);
}

} // namespace

int getLan() {
    list *head = nullptr, *prev = nullptr;
    const int count = collect(head, prev);
    // What a stop interrupts is not known.
    if (!stopRequested()) {
        lanSort(head, prev);
        showList(LAN_REPORT, head, count);
        uploadList(LAN_REPORT, head, count);
        addNetworkSELRecord(head);
    }
    freeNodes(head, prev);
    return 0;
}

std::string getMac(const addresses& all, const std::string& ifname) {
    const auto link = std::find_if(all.begin(), all.end(), [&](const auto& entry) {
        return entry.name == ifname && entry.family == platform::address_family::link;
    });
    if (link == all.end() || !link->has_mac)
        return "";
    const std::array<std::uint8_t, 6>& mac = link->mac;
    char text[18];
    std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2],
                  mac[3], mac[4], mac[5]);
    return text;
}

void lanSort(list*& head, list*& prev) {
    std::vector<list*> nodes;
    for (list* node = head; node != nullptr; node = node->next)
        nodes.push_back(node);
    std::stable_sort(nodes.begin(), nodes.end(),
                     [](const list* a, const list* b) { return macKey(a) < macKey(b); });
    head = prev = nullptr;
    for (list* node : nodes) {
        node->next = nullptr;
        appendNodes(head, prev, node, node);
    }
}
