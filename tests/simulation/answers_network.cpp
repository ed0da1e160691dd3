// What ifconfig, netstat, pciconf and uname print.
#include "world.h"

namespace sim {

const std::vector<Medium> MEDIA = {
    {"autoselect (1000baseT <full-duplex>)", "autoselect", 1000, 0},
    {"autoselect (10Gbase-T <full-duplex>)", "autoselect (none)", 10240, 0},
    {"10Gbase-LR <full-duplex,rxpause>", "10Gbase-LR <full-duplex,rxpause>", 10240, 10240},
    {"10baseT/UTP", "10baseT/UTP", 10, 10},
    {"autoselect (100GBase-SR4 <full-duplex,rxpause>)", "autoselect", 102400, 0},
    {"autoselect (2500Base-T <full-duplex>)", "autoselect", 2500, 0},
    {"autoselect (40Gbase-CR4 <full-duplex>)", "autoselect", 40960, 0},
    {"autoselect (25GBase-SR <full-duplex>)", "autoselect", 25600, 0},
    {"autoselect <full-duplex> (100baseTX <full-duplex>)", "autoselect", 100, 0},
    {"autoselect (Quantum-9 <full-duplex>)", "autoselect", 0, 0}};

namespace {

std::string flagsOf(const World& world, const Nic& nic) {
    const bool lower_up = world.release >= 14 && nic.up;
    return format(
        "%s: flags=%x<%sBROADCAST,%sSIMPLEX,MULTICAST%s> metric 0 mtu 1500\n", nic.name.c_str(),
        0x8802U | (nic.up ? 0x41U : 0) | (nic.loopback ? 8U : 0) | (lower_up ? 0x1000000U : 0),
        nic.up ? "UP," : "", nic.loopback ? "LOOPBACK," : "", lower_up ? ",LOWER_UP" : "");
}

std::string mediumOf(const Nic& nic) {
    if (nic.medium == nullptr)
        return "";
    return say("\tmedia: Ethernet {}\n\tstatus: {}\n",
               nic.carrier ? nic.medium->linked : nic.medium->unlinked,
               nic.carrier ? "active" : "no carrier");
}

std::string ifconfig(const World& world) {
    const char* const end = world.release == 10 ? " \n" : "\n";
    const std::string discovery = "\tnd6 options=29<PERFORMNUD,IFDISABLED,AUTO_LINKLOCAL>\n";
    std::string text;
    for (const Nic& nic : world.nics) {
        text += flagsOf(world, nic);
        if (nic.row % 3 == 0) // free text that looks like what is wanted
            text += "\tdescription: status: active media: (100baseTX) inet6 ::2\n";
        text += say("\toptions=4219b<RXCSUM,TXCSUM,VLAN_MTU,TSO4>\n\tether {}\n", nic.mac);
        for (const auto& [address, prefix] : nic.ip4)
            text += format("\tinet %s netmask 0x%08x broadcast 192.0.2.255%s", address.c_str(),
                           ~0U << (32 - prefix), end);
        for (const std::string& address : nic.ip6)
            text += say("\tinet6 {} prefixlen 64{}", address, end);
        if (world.release >= 14 && nic.device.empty())
            text += "\tgroups: vlan\n\tvlan: 5 vlanproto: 802.1q parent interface: em0\n";
        text += world.release < 14 ? discovery + mediumOf(nic) : mediumOf(nic) + discovery;
    }
    return text;
}

std::string netstat(const World& world, bool v6) {
    const int width = v6 ? 34 : 19;
    std::string text = say("Routing tables\n\nInternet{}:\n", v6 ? "6" : "");
    const auto row = [&](auto to, auto via, const char* rest) {
        text += format("%-*s%-*s%s\n", width, to, width, via, rest);
    };
    row("Destination", "Gateway", "Flags      Netif Expire");
    for (const Route& route : routesOf(world))
        if (route.v6 == v6) // the name is cut to the width of its column
            row(route.to.c_str(), route.via.c_str(),
                format("UGS    %9.8s%s", route.through.c_str(), route.to == "::/96" ? " =>" : "")
                    .c_str());
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
        text += say("{}@pci0:2:0:0:\tclass=0x020000 {}\n", nic.device,
                    world.release < 13 ? "card=0x00008086 chip=0x10d38086 rev=0x01 hdr=0x00"
                                       : "rev=0x01 hdr=0x00 vendor=0xa0c1 device=0x1539");
        text += vendor.empty() ? "" : say("    vendor     = '{}'\n", vendor);
        text += say("    device     = '{}'\n    class      = network\n", model);
    }
    return text;
}

} // namespace

std::vector<Route> routesOf(const World& world) {
    std::vector<Route> routes = {{true, "::/96", "::1", "lo0"}};
    if (!world.gateway6_nic.empty())
        routes.push_back({true, "default", "fe80::1%em0", world.gateway6_nic});
    if (!world.gateway4_nic.empty())
        routes.push_back({false, "default", "192.0.2.1", world.gateway4_nic});
    for (const Nic& nic : world.nics) {
        for (const std::string& address : nic.ip6)
            routes.push_back({true, address, say("link#{}", nic.row), "lo0"});
        for (const auto& ip4 : nic.ip4)
            routes.push_back({false, ip4.first, say("link#{}", nic.row), "lo0"});
    }
    return routes;
}

std::string osVersion(const World& world) {
    return say("{}.1-RELEASE{} amd64", world.release, world.release == 14 ? "-p3" : "");
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
        return {0, "FreeBSD\n"};
    if (command == "uname -r -p")
        return {0, osVersion(world) + "\n"};
    return command == "hostname" ? Printed{0, world.host + "\n"} : Printed{64, ""};
}

} // namespace sim
