#include "host/network_inventory.h"

#include "bmc/parameter_upload.h"
#include "config/logs.h"
#include "host/interface_walk.h"
#include "host/media_speed.h"
#include "host/network_events.h"
#include "host/network_lookups.h"
#include "platform/platform.h"
#include "text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <netdb.h>
#include <utility>
#include <vector>

namespace {

constexpr int MAX_LAN_RECORDS = 31;
constexpr std::size_t MAX_LIST_LENGTH = 256;
constexpr std::size_t MAC_KEY_LENGTH = 12;
constexpr const char* LABEL = "Get Lan ->";

// Empty when the address has no numeric text.
std::string numericHost(const sockaddr_storage& address, socklen_t length) {
    char text[NI_MAXHOST];
    if (getnameinfo(reinterpret_cast<const sockaddr*>(&address), length, text, sizeof text, nullptr,
                    0, NI_NUMERICHOST) != 0)
        return "";
    return text;
}

// An address that no longer fits is left out whole: half of one would be another address.
void appendToList(std::string& joined, const std::string& text) {
    const std::string addition = joined.empty() ? text : "," + text;
    if (joined.size() + addition.size() <= MAX_LIST_LENGTH)
        joined += addition;
}

// The IPv4 addresses of an interface and their distinct netmasks, joined by ",". False when the
// kernel doesn't tell.
bool ipv4Lists(const std::string& ifname, std::string& ipv4, std::string& netmasks) {
    std::vector<platform::interface_address> addresses;
    if (platform::interface_addresses(addresses) != 0) {
        printErrLog(LABEL, "getifaddrs error");
        return false;
    }
    for (const platform::interface_address& entry : addresses) {
        if (entry.name != ifname || entry.family != platform::address_family::inet ||
            entry.address_length != sizeof(sockaddr_in))
            continue;
        const std::string netmask = numericHost(entry.netmask, sizeof(sockaddr_in));
        if (netmask.empty()) {
            printErrLog(LABEL, "getnameinfo netmask error");
            continue;
        }
        if (netmasks.find(netmask) == std::string::npos)
            appendToList(netmasks, netmask);
        const std::string address = numericHost(entry.address, entry.address_length);
        if (address.empty())
            printErrLog(LABEL, "getnameinfo IP error");
        else
            appendToList(ipv4, address);
    }
    return true;
}

// An interface that is administratively down may still show an active medium.
bool isLinkUp(const std::string& ifname, unsigned flags) {
    return (flags & platform::INTERFACE_UP) != 0 && getMediaStatus(ifname) == "active";
}

// The twelve fields of an interface. False when the walk must end.
bool buildRecord(int row, const platform::ifmibdata& data, std::string& record) {
    const std::string ifname = interfaceName(data);
    std::string ipv4, netmasks;
    if (!ipv4Lists(ifname, ipv4, netmasks))
        return false;
    char mac[18];
    getMac(ifname, mac);

    const std::string ipv6 = getIPv6(ifname);
    const std::string fields[] = {std::to_string(row),
                                  mac,
                                  ifname,
                                  ipv4,
                                  ipv6,
                                  getGateway(ipv6),
                                  netmasks,
                                  getFQDN(),
                                  getDNS(ifname),
                                  std::to_string(linkSpeed(ifname)),
                                  getDescription(ifname),
                                  isLinkUp(ifname, data.ifmd_flags) ? NETWORK_UP : NETWORK_DOWN};
    record.clear();
    for (const std::string& field : fields)
        record.append(field).append(";");
    return true;
}

// Appends a record per interface, the highest row first. Returns their number.
int collect(list*& head, list*& prev) {
    int count = 0, rows = 0;
    if (platform::interface_count(rows) != 0) {
        printErrLog("Lan ->", "command not found");
        return 0;
    }
    walkInterfaces(rows, [&](int row, const platform::ifmibdata& data) {
        std::string record;
        if (!buildRecord(row, data, record))
            return false;
        list* node = appendNode(head, prev);
        node->no = row;
        copyText(node->parm, record);
        return ++count < MAX_LAN_RECORDS;
    });
    return count;
}

void normalise(list& node) {
    std::string text = node.parm;
    replaceEmptyToNAExceptDoubleColon(text);
    copyText(node.parm, text);
}

std::string macKey(const list& node) {
    std::vector<std::string> fields = splitFields(node.parm, ";", 2);
    fields.resize(2);
    return fields[1].substr(0, MAC_KEY_LENGTH);
}

} // namespace

int getLan() {
    list *head = nullptr, *prev = nullptr;
    const int count = collect(head, prev);
    std::printf("Lan items %d%d\n", count / 255, count % 255);
    lanSort(head);
    for (list* node = head; node != nullptr; node = node->next) {
        normalise(*node);
        std::printf("Lan : (%d)%s\n", node->no, node->parm);
    }
    printIntLog("Lan items ->", count);
    if (count > 0) {
        ipmiCmdSet(PARM_LAN_COUNT, itemCount(count));
        for (const list* node = head; node != nullptr; node = node->next) {
            printLog("Lan ->", "(" + std::to_string(node->no) + ")" + node->parm);
            ipmiCmdSet(PARM_LAN, node->parm);
        }
        addNetworkSELRecord(head);
    }
    freeNodes(head, prev);
    return 0;
}

int getMac(const std::string& ifname, char (&macaddrstr)[18]) {
    macaddrstr[0] = '\0';
    std::vector<platform::interface_address> addresses;
    if (platform::interface_addresses(addresses) != 0)
        return 0;
    const auto link = std::find_if(addresses.begin(), addresses.end(), [&](const auto& entry) {
        return entry.name == ifname && entry.family == platform::address_family::link;
    });
    if (link == addresses.end() || !link->has_mac)
        return 0;
    const std::array<std::uint8_t, 6>& mac = link->mac;
    std::snprintf(macaddrstr, sizeof macaddrstr, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1],
                  mac[2], mac[3], mac[4], mac[5]);
    return 1;
}

void lanSort(list* start) {
    list* end = nullptr;
    bool exchanged = start != nullptr;
    while (exchanged) {
        exchanged = false;
        list* node = start;
        for (; node->next != end; node = node->next)
            if (macKey(*node) > macKey(*node->next)) {
                swap(node, node->next);
                exchanged = true;
            }
        end = node;
    }
}

void swap(list* a, list* b) {
    std::swap(a->no, b->no);
    std::swap(a->parm, b->parm);
}
