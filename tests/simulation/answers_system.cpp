// What the programs of the system print, smartctl and lspci.
#include "world.h"

#include <algorithm>

namespace sim {

const std::vector<Medium> MEDIA = {
    {"autoselect (1000baseT <full-duplex>)", "autoselect", 1000, 0},
    {"autoselect (10Gbase-T <full-duplex>)", "autoselect (none)", 10240, 0},
    {"10Gbase-LR <full-duplex,rxpause>", "10Gbase-LR <full-duplex,rxpause>", 10240, 10240},
    {"10baseT/UTP", "10baseT/UTP", 10, 10},
    {"autoselect (100GBase-SR4 <full-duplex,rxpause>)", "autoselect", 102400, 0},
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
        text += world.release < 14 ? discovery + mediumOf(nic) : mediumOf(nic) + discovery;
    }
    return text;
}

std::string netstat(const World& world, bool v6) {
    const int width = v6 ? 34 : 19;
    std::string text = v6 ? "Routing tables\n\nInternet6:\n" : "Routing tables\n\nInternet:\n";
    const auto row = [&](const std::string& to, const std::string& via, const std::string& nic,
                         const char* flags = "UGS") {
        if (!nic.empty()) // it is cut to the width of its column
            text += format("%-*s%-*s%-6s %8.8s%s\n", width, to.c_str(), width, via.c_str(), flags,
                           nic.c_str(), to == "::/96" ? " =>" : "");
    };
    row("Destination", "Gateway", "Netif", "Flags");
    row("default", v6 ? GATEWAY6 : GATEWAY4, v6 ? world.gateway6_nic : world.gateway4_nic);
    row("::/96", "::1", v6 ? "lo0" : "");
    for (const Nic& nic : world.nics) {
        for (const std::string& address : nic.ip6)
            row(address, say("link#{}", nic.row), v6 ? "lo0" : "");
        for (const auto& ip4 : nic.ip4)
            row(ip4.first, say("link#{}", nic.row), v6 ? "" : "lo0");
    }
    return text;
}

std::string pciconf(const World& world) {
    std::string text = "hostb0@pci0:0:0:0:\tclass=0x060000 rev=0x05\n    class      = bridge\n";
    for (const Nic& nic : world.nics) {
        if (nic.device.empty())
            continue;
        const auto [vendor, model] = adapterOf(nic.device);
        text += say("{}@pci0:2:0:0:\tclass=0x020000 {}\n", nic.device,
                    world.release < 13 ? "card=0x00008086 chip=0x10d38086 rev=0x01 hdr=0x00"
                                       : "rev=0x01 hdr=0x00 vendor=0xa0c1 device=0x1539");
        text += (vendor.empty() ? "" : "    vendor     = '" + vendor + "'\n") +
                say("    device     = '{}'\n    class      = network\n", model);
    }
    return text;
}

std::string geomList(const World& world) {
    std::string text;
    for (const Disk& disk : world.disks)
        if (disk.there)
            text += say("Geom name: {}\nProviders:\n1. Name: {}\n   Mediasize: {} ({}G)\n"
                        "   Sectorsize: 512\n{}   Mode: r1w1e2\n   descr: {}\n{}   ident: {}\n"
                        "   rotationrate: {}\n   fwsectors: 63\n\n",
                        disk.name, disk.name, disk.gigabytes << 30, disk.gigabytes,
                        disk.rpm > 6000 ? "   Stripesize: 4096\n" : "", disk.model,
                        world.release > 10 ? "   lunid: 50f1e2d3c4b5a815\n" : "",
                        disk.ata ? disk.serial : "(null)", disk.ssd ? "0" : "unknown");
    return text;
}

std::string devlist(const World& world) {
    std::string text = "<AHCI Enclosure 1.00 0001>   at scbus99 target 0 lun 0 (ses0,pass9)\n";
    for (std::size_t i = 0; i < world.disks.size(); i++) {
        const Disk& disk = world.disks[i];
        if (disk.there && disk.bus >= 0) // the order of the names varies
            text += say("<{} {}>  at scbus{} target 0 lun 0 ({}{},pass{})\n", disk.model,
                        disk.firmware, disk.bus, disk.name, i % 2 == 0 ? "" : ",probe", i);
    }
    return text;
}

Printed identify(const World& world, const Disk& disk) {
    const std::string kind = disk.name.substr(0, 2);
    if (!disk.ata && kind == "da")
        return {1, ""};
    if (kind == "nd")
        return {0, say("Controller Capabilities/Features\n====\nModel Number:  {}\n", disk.model)};
    return {0, say("pass0: <{}> ATA-9 SATA 3.x device\n\nprotocol              ATA\n"
                   "device model          {}\nserial number         {}\ncylinders             16383"
                   "\n\nFeature                      Support  Enabled   Value           Vendor\n"
                   "SMART                          yes\tyes\n{} {}\n",
                   disk.model, disk.model, disk.serial,
                   world.release == 10 ? "data set management (TRIM)    "
                                       : "Data Set Management (DSM/TRIM)",
                   disk.ssd ? "yes" : "no")};
}

std::string gpart(const World& world) {
    std::string text;
    for (const Disk& disk : world.disks) {
        if (!disk.there || disk.partitions.empty())
            continue;
        text += say("=>     34  23581    {}  GPT  (112G)\n  34  8  - free -  (512K)\n", disk.name);
        for (const Partition& one : disk.partitions)
            text += say("       1024       1024  {}  freebsd-ufs  {}({})\n", one.name,
                        one.block == 0 ? "[active]  " : "", one.size);
        text += "\n";
    }
    return text;
}

std::string usage(const World& world, Use use) {
    std::string text = "Device             1K-blocks       Used      Avail Capacity\n"
                       "zroot/ROOT/ada0p1     213651       8123     205527     4%    /\n";
    for (const Disk& disk : world.disks)
        for (const Partition& one : disk.partitions)
            if (disk.there && one.use == use)
                text +=
                    say("/dev/{}   {} {} {}    18%", one.name, one.total, one.used, one.available) +
                    (use == Use::swap ? "\n" : "    /old " + one.name + " data\n");
    return text;
}

std::string graid(const World& world) {
    std::string text;
    for (const Rste& volume : world.volumes) {
        text +=
            say("Geom name: Intel-08f999b{}\nState: {}\nMetadata: Intel\nProviders:\n1. Name: {}\n"
                "   Mediasize: 536866816 (512M)\n   State: {}\n   Components: {}\n"
                "   Transformation: RAID{}\n   RAIDLevel: RAID{}\nConsumers:\n",
                volume.provider.back(), volume.state, volume.provider, volume.state,
                volume.members.size(), volume.level, volume.level);
        int place = 0;
        for (const std::string& member : volume.members)
            if (++place; diskNamed(world, member)->there)
                text += say("{}. Name: {}\n   Mediasize: 536870912 (512M)\n   ReadErrors: 0\n"
                            "   Subdisks: r0(vol0):{}@0\n   State: ACTIVE (ACTIVE)\n",
                            place, member, place);
        text += "\n";
    }
    return text;
}

const char* const LSPCI =
    "00:00.0 Host bridge: Fabrikam Corporation X7 Memory Hub (rev 07)\n"
    "00:14.0 USB controller: Fabrikam Corporation Q87 USB xHCI Host Controller #2 (rev 05)\n"
    "00:1f.2 SATA controller: Fabrikam Corporation Q87 6-Port SATA: AHCI mode #1 (rev 05)\n";

const Printed HEALTH_ANSWERS[] = {
    {0, "SMART overall-health self-assessment test result: PASSED\n\n"},
    {32, "SMART overall-health self-assessment test result: PASSED\n"
         "Please note the following marginal Attributes:\n"
         "190 Airflow_Temperature_Cel 0x0022   058   030   045    In_the_past 42\n\n"},
    {4, "SMART Status not supported: Incomplete response, ATA output registers missing\n"
        "SMART overall-health self-assessment test result: PASSED\n"
        "Warning: This result is based on an Attribute check.\n\n"},
    {24, "SMART overall-health self-assessment test result: FAILED!\n"
         "Drive failure expected in less than 24 hours. SAVE ALL DATA.\n\n"},
    {4, "\n"}};

Printed smartText(const World& world, const Disk& disk, bool attributes) {
    const std::string banner =
        say("smartctl {} [FreeBSD {}]\n\n", world.smartctl == 6 ? "6.3" : "7.3", world.release);
    if (disk.usb)
        return {1, banner + "/dev/" + disk.name + ": Unknown USB bridge [0x0930:0x6544 (0x100)]\n"};
    const auto& [status, words] = HEALTH_ANSWERS[static_cast<int>(disk.health)];
    const bool silent = disk.health == Health::silent;
    std::string text =
        say("{}=== START OF INFORMATION SECTION ===\nDevice Model:     {}\nSerial Number:    {}\n"
            "Firmware Version: {}\nRotation Rate:    {}\nSMART support is: {}\n\n{}{}",
            banner, disk.model, disk.serial, disk.firmware,
            disk.ssd ? "Solid State Device" : say("{} rpm", disk.rpm),
            silent ? "Unavailable - device lacks SMART" : "Enabled",
            silent ? "" : "=== START OF READ SMART DATA SECTION ===\n", words);
    if (attributes && disk.temperature >= 0 && !silent)
        text +=
            say("ID# ATTRIBUTE_NAME          FLAG     VALUE WORST THRESH TYPE      UPDATED\n190 "
                "Airflow_Temperature_Cel 0x0032 067 053 --- Old_age Always - 99\n194 "
                "Temperature_Celsius     0x0022 067 053 000 Old_age Always - {}{}\n",
                disk.temperature, world.smartctl == 6 ? "" : " (Min/Max 19/47 #12)");
    return {status, text};
}

Printed smartctl(const World& world, const std::string& device, bool attributes) {
    if (const Disk* disk = diskNamed(world, device); disk != nullptr && disk->there)
        return smartText(world, *disk, attributes);
    for (const Controller& one : world.controllers)
        for (const Drive& drive : one.drives)
            if (one.kind == Kind::megaraid && one.there && drive.there &&
                say("pass{}", drive.device_id) == device) {
                Disk behind{device, drive.serial, drive.model, drive.firmware};
                behind.health = drive.health;
                return smartText(world, behind, attributes);
            }
    return {2, "Smartctl open device: /dev/" + device + " failed: No such file or directory\n"};
}

Printed deviceAnswer(const World& world, const std::string& program, const std::string& device) {
    for (const Disk& disk : world.disks) {
        if (disk.there && disk.name == device && program == "camcontrol")
            return identify(world, disk);
        if (disk.there && disk.name == device && program == "fdisk")
            return {0, say("******* Working on device /dev/{} *******\nparameters extracted from "
                           "in-core disklabel are:\ncylinders={} heads=16 sectors/track=63\n\n"
                           "parameters to be used for BIOS calculations are:\n"
                           "cylinders=1 heads=2 sectors/track=3 (6 blks/cyl)\n",
                           disk.name, disk.cylinders)};
        for (const Partition& one : disk.partitions)
            if (disk.there && one.name == device && program == "newfs" && one.block != 0)
                return {0, say("{}/dev/{}: 110375.0MB (226048000 sectors) block size {}, fragment "
                               "size 4096\n\tusing 4 cylinder groups of 27593.03MB, 883000 blks\n",
                               world.release == 12 ? "density increased from 1 to 4096\n" : "",
                               one.name, one.block)};
    }
    return {1, ""};
}

} // namespace

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

const Disk* diskNamed(const World& world, const std::string& name) {
    const auto found = std::find_if(world.disks.begin(), world.disks.end(),
                                    [&](const Disk& disk) { return disk.name == name; });
    return found == world.disks.end() ? nullptr : &*found;
}

Printed systemAnswer(const World& world, const std::string& program, const std::string& command) {
    const std::string device = command.substr(command.find_last_of(" /") + 1);
    if (program == "smartctl")
        return smartctl(world, device, command.find(" -A ") != std::string::npos);
    if (program == "fdisk" || program == "newfs" || command.rfind("camcontrol identify", 0) == 0)
        return deviceAnswer(world, program, device);
    using Row = std::string (*)(const World& world);
    static const std::map<std::string, Row> answers = {
        {"ifconfig -a", ifconfig},
        {"netstat -rn -4", [](const World& of) { return netstat(of, false); }},
        {"netstat -rn -6", [](const World& of) { return netstat(of, true); }},
        {"pciconf -lv", pciconf},
        {"hostname", [](const World& of) { return of.host + "\n"; }},
        {"uname", [](const World&) { return std::string("FreeBSD\n"); }},
        {"uname -r -p", [](const World& of) { return osVersion(of) + "\n"; }},
        {"geom disk list", geomList},
        {"camcontrol devlist", devlist},
        {"gpart show -p", gpart},
        {"df -k -l", [](const World& of) { return usage(of, Use::mounted); }},
        {"swapinfo -k", [](const World& of) { return usage(of, Use::swap); }},
        {"graid list", graid},
        {"lspci -v", [](const World&) { return std::string(LSPCI); }}};
    const auto found = answers.find(command);
    return found == answers.end() ? Printed{64, ""} : Printed{0, found->second(world)};
}

std::vector<std::string> devNames(const World& world) {
    std::vector<std::string> names = {"null", "nvme0ns2", "nvmefabrics", "ses0"};
    for (const Disk& disk : world.disks)
        if (disk.there) {
            names.push_back(disk.name);
            for (const Partition& partition : disk.partitions)
                names.push_back(partition.name);
        }
    for (const Nvme& nvme : world.nvmes)
        if (nvme.there)
            for (const char* end : {"", "ns1"})
                names.push_back(say("nvme{}{}", nvme.number, end));
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace sim
