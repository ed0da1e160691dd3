// What ifconfig, netstat, pciconf and uname print.
#include "world.h"

#include <algorithm>

namespace sim {

const std::array<Medium, 10> MEDIA = {{
    {"Ethernet autoselect (1000baseT <full-duplex>)", "Ethernet autoselect", 1000, 0},
    {"Ethernet autoselect (10Gbase-T <full-duplex>)", "Ethernet autoselect (none)", 10240, 0},
    {"Ethernet 10Gbase-LR <full-duplex,rxpause,txpause>",
     "Ethernet 10Gbase-LR <full-duplex,rxpause,txpause>", 10240, 10240},
    {"Ethernet 10baseT/UTP", "Ethernet 10baseT/UTP", 10, 10},
    {"Ethernet autoselect (100GBase-SR4 <full-duplex,rxpause,txpause>)", "Ethernet autoselect",
     102400, 0},
    {"Ethernet autoselect (2500Base-T <full-duplex>)", "Ethernet autoselect", 2500, 0},
    {"Ethernet autoselect (40Gbase-CR4 <full-duplex>)", "Ethernet autoselect", 40960, 0},
    {"Ethernet autoselect (25GBase-SR <full-duplex>)", "Ethernet autoselect", 25600, 0},
    {"Ethernet autoselect <full-duplex> (100baseTX <full-duplex>)", "Ethernet autoselect", 100, 0},
    {"Ethernet autoselect (Quantum-9 <full-duplex>)", "Ethernet autoselect", 0, 0},
}};

namespace {

std::string netmask(int prefix) {
    return format("0x%08x", prefix == 0 ? 0U : ~0U << (32 - prefix));
}

std::string flagsOf(const World& world, const Nic& nic) {
    const unsigned flags = 0x8802U | (nic.up ? 0x41U : 0U) | (nic.loopback ? 0x8U : 0U);
    const bool lower_up = world.release >= 14 && nic.up;
    return format("flags=%x<%sBROADCAST,%sSIMPLEX,MULTICAST%s> metric 0 mtu 1500",
                  flags | (lower_up ? 0x1000000U : 0U), nic.up ? "UP," : "",
                  nic.loopback ? "LOOPBACK," : "", lower_up ? ",LOWER_UP" : "");
}

std::string mediumOf(const Nic& nic) {
    if (nic.medium < 0)
        return "";
    const Medium& medium = MEDIA.at(static_cast<std::size_t>(nic.medium));
    return format("\tmedia: %s\n\tstatus: %s\n", nic.carrier ? medium.linked : medium.unlinked,
                  nic.carrier ? "active" : "no carrier");
}

std::string ifconfig(const World& world) {
    std::string text;
    for (const Nic& nic : world.nics) {
        const char* const end = world.release == 10 ? " \n" : "\n";
        text += nic.name + ": " + flagsOf(world, nic) + "\n";
        if (nic.row % 3 == 0) // free text that looks like what is wanted
            text += "\tdescription: status: active media: (100baseTX) inet6 ::2\n";
        text += "\toptions=4219b<RXCSUM,TXCSUM,VLAN_MTU,TSO4>\n\tether " + nic.mac + "\n";
        for (const auto& [address, prefix] : nic.ip4)
            text += "\tinet " + address + " netmask " + netmask(prefix) + " broadcast 192.0.2.255" +
                    end;
        for (const std::string& address : nic.ip6)
            text += "\tinet6 " + address + " prefixlen 64" + end;
        const std::string discovery = "\tnd6 options=29<PERFORMNUD,IFDISABLED,AUTO_LINKLOCAL>\n";
        if (world.release >= 14 && nic.device.empty())
            text +=
                "\tgroups: vlan\n\tvlan: 5 vlanproto: 802.1q vlanpcp: 0 parent interface: em0\n";
        text += world.release < 14 ? discovery + mediumOf(nic) : mediumOf(nic) + discovery;
    }
    return text;
}

std::string netstat(const World& world, bool v6) {
    const int width = v6 ? 34 : 19;
    std::string text = v6 ? "Routing tables\n\nInternet6:\n" : "Routing tables\n\nInternet:\n";
    text += format("%-*s%-*s%-11s%s\n", width, "Destination", width, "Gateway", "Flags",
                   "Netif Expire");
    for (const Route& route : routesOf(world))
        if (route.v6 == v6) // the name is cut to the width of its column
            text +=
                format("%-*s%-*s%-7s%9.8s%s\n", width, route.to.c_str(), width, route.via.c_str(),
                       "UGS", route.through.c_str(), route.to == "::/96" ? " =>" : "");
    return text;
}

std::string pciconf(const World& world) {
    std::string text =
        "hostb0@pci0:0:0:0:\tclass=0x060000 card=0x0801a0c1 chip=0x0c08a0c1 rev=0x05 "
        "hdr=0x00\n    class      = bridge\n    subclass   = HOST-PCI\n";
    for (const Nic& nic : world.nics) {
        if (nic.device.empty())
            continue;
        const auto [vendor, model] = adapterOf(nic.device);
        const char* const ids = world.release < 13
                                    ? "card=0x00008086 chip=0x10d38086 rev=0x01 hdr=0x00"
                                    : "rev=0x01 hdr=0x00 vendor=0xa0c1 device=0x1539";
        text += nic.device + "@pci0:2:0:0:\tclass=0x020000 " + ids + "\n";
        if (!vendor.empty())
            text += "    vendor     = '" + vendor + "'\n";
        text += "    device     = '" + model + "'\n    class      = network\n";
    }
    return text;
}

} // namespace

std::vector<Route> routesOf(const World& world) {
    std::vector<Route> routes;
    if (!world.gateway6_nic.empty())
        routes.push_back({true, "default", world.gateway6, world.gateway6_nic});
    routes.push_back({true, "::/96", "::1", "lo0"});
    for (const Nic& nic : world.nics)
        for (const std::string& address : nic.ip6)
            routes.push_back({true, address, format("link#%d", nic.row), "lo0"});
    if (!world.gateway4_nic.empty())
        routes.push_back({false, "default", world.gateway4, world.gateway4_nic});
    for (const Nic& nic : world.nics)
        for (const auto& [address, prefix] : nic.ip4)
            routes.push_back({false, address, format("link#%d", nic.row), "lo0"});
    return routes;
}

const char* osName() {
    return "FreeBSD";
}

std::string osVersion(const World& world) {
    return format("%d.1-RELEASE%s amd64", world.release, world.release == 14 ? "-p3" : "");
}

std::pair<std::string, std::string> adapterOf(const std::string& device) {
    if (device.compare(0, 2, "em") == 0)
        return {"Fabrikam Corporation", "FX-14 Gigabit Network Adapter (rev 2)"};
    if (device.compare(0, 2, "ix") == 0)
        return {"Contoso, Ltd.", "10GbE for the owners of servers"};
    return {"", "Device with a name only"};
}

Printed networkAnswer(const World& world, const std::string& command) {
    if (command == "ifconfig -a")
        return {0, ifconfig(world)};
    if (command == "netstat -rn -4" || command == "netstat -rn -6")
        return {0, netstat(world, command.back() == '6')};
    if (command == "pciconf -lv")
        return {0, pciconf(world)};
    if (command == "uname")
        return {0, std::string(osName()) + "\n"};
    if (command == "uname -r -p")
        return {0, osVersion(world) + "\n"};
    if (command == "hostname")
        return {0, world.host + "\n"};
    return {64, ""};
}

} // namespace sim
