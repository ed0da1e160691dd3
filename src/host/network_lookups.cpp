#include "host/network_lookups.h"

#include "config/logs.h"
#include "host/interface_facts.h"
#include "host/lan_record.h"
#include "platform/platform.h"
#include "text.h"
#include "tools/ask.h"
#include "tools/netstat.h"
#include "tools/one_line.h"
#include "tools/pciconf.h"
#include "tools/resolv_conf.h"

#include <algorithm>
#include <map>
#include <set>

namespace {

constexpr const char* LABEL = "Lan ->";
constexpr const char* FQDN_LABEL = "FQDN ->";
constexpr const char* DESCRIPTION_LABEL = "get description ->";

constexpr std::size_t DESCRIPTION_MOST = 256;

using routes = std::vector<listed_route>;

// What was told last.
routes ipv4_routes, ipv6_routes;
std::map<std::string, pci_device> adapters;
std::string name_servers;

std::set<std::string> names;           // of the interfaces of this cycle
std::set<std::string> described_names; // of those there were when the adapters were told

void askRoutes(const char* family, routes& last) {
    const reply& answer = ask({netstatCommand(family), LABEL, {}, NETSTAT_BYTES});
    if (!answer.known && answer.end != program_end::cut) // what is beyond is not wanted
        return;
    std::string_view text = answer.text;
    if (answer.end == program_end::cut) // half an address would be another address
        text = text.substr(0, text.rfind('\n') + 1);
    last = parseNetstat(text);
}

void askAdapters() {
    if (names == described_names)
        return;
    const reply& answer = ask({pciconfCommand(), DESCRIPTION_LABEL});
    if (answer.end == program_end::missing || answer.end == program_end::not_started)
        printErrLog(DESCRIPTION_LABEL, "command not found");
    auto told = answer.known ? parsePciconf(answer.text) : std::map<std::string, pci_device>();
    const bool whole = answer.succeeded(); // else half of them may be missing
    if (told.empty() || (!whole && !adapters.empty()))
        return;
    adapters = std::move(told);
    if (whole)
        described_names = names;
}

// Whether a route leads through this interface. A name that may be cut means the only one that
// begins so.
bool isThrough(const listed_route& route, const std::string& iface) {
    const std::string& listed = route.interface;
    const auto begins = [&](const std::string& name) {
        return name.compare(0, listed.size(), listed) == 0;
    };
    if (!route.maybe_cut)
        return listed == iface;
    std::set<std::string> all = listedInterfaces(); // more than those of the records
    all.insert(names.begin(), names.end());
    return begins(iface) && std::count_if(all.begin(), all.end(), begins) == 1;
}

template <class Fits>
std::string gatewayOfFirst(const routes& table, Fits fits) {
    const auto found = std::find_if(table.begin(), table.end(), fits);
    return found == table.end() ? "" : found->gateway;
}

} // namespace

void askNetworkTools(const std::vector<interface_row>& rows) {
    names.clear();
    for (const interface_row& row : rows)
        names.insert(row.name);
    askInterfaces(rows);
    askRoutes("-4", ipv4_routes);
    askRoutes("-6", ipv6_routes);
    askAdapters();
    name_servers = joinedList(parseResolvConf(tools.read_file(RESOLV_CONF).value_or("")));
}

std::string getIPv6(const std::string& iface) {
    return joinedList(factsOf(iface).ipv6);
}

std::string getGateway(const std::string& iface) {
    const auto isDefault = [&](const listed_route& route) {
        return route.destination == "default" && isThrough(route, iface);
    };
    const std::vector<std::string>& addresses = factsOf(iface).ipv6;
    const auto carriesAddress = [&](const listed_route& route) {
        return std::any_of(addresses.begin(), addresses.end(), [&](const std::string& address) {
            return address == route.destination || address == route.gateway;
        });
    };
    std::string gateway = gatewayOfFirst(ipv4_routes, isDefault);
    if (gateway.empty())
        gateway = gatewayOfFirst(ipv6_routes, isDefault);
    return gateway.empty() ? gatewayOfFirst(ipv6_routes, carriesAddress) : gateway;
}

std::string getFQDN() {
    std::string name;
    if (platform::host_name(name) != 0)
        name = lineOf(ask({{"hostname"}, FQDN_LABEL}));
    dropNewline(name);
    if (name.empty())
        printErrLog(FQDN_LABEL, "command not found");
    return name;
}

std::string getDNS(const std::string& iface) {
    return factsOf(iface).active ? name_servers : "";
}

std::string getDescription(const std::string& iface) {
    const auto found = adapters.find(iface);
    if (found == adapters.end())
        return "";
    const pci_device& device = found->second;
    const bool both = !device.vendor.empty() && !device.device.empty();
    return (device.vendor + (both ? " " : "") + device.device).substr(0, DESCRIPTION_MOST);
}
