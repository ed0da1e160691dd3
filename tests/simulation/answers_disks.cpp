// What geom, camcontrol, gpart, fdisk, df, swapinfo, newfs, lspci, smartctl and graid print.
#include "world.h"

#include <algorithm>

namespace sim {

namespace {

std::string geomList(const World& world) {
    std::string text;
    for (const Disk& disk : world.disks) {
        if (!disk.there)
            continue;
        const char* const name = disk.name.c_str();
        text += format("Geom name: %s\nProviders:\n1. Name: %s\n   Mediasize: %llu (%lluG)\n"
                       "   Sectorsize: 512\n%s   Mode: r1w1e2\n   descr: %s\n",
                       name, name, static_cast<unsigned long long>(disk.bytes),
                       static_cast<unsigned long long>(disk.bytes >> 30),
                       disk.rpm > 6000 ? "   Stripesize: 4096\n" : "", disk.model.c_str());
        if (world.release > 10)
            text += "   lunid: 50f1e2d3c4b5a815\n";
        text += format("   ident: %s\n   rotationrate: %s\n   fwsectors: 63\n\n",
                       disk.ata ? disk.serial.c_str() : "(null)", disk.ssd ? "0" : "unknown");
    }
    return text;
}

std::string devlist(const World& world) {
    std::string text =
        "<AHCI SGPIO Enclosure 1.00 0001>   at scbus99 target 0 lun 0 (ses0,pass9)\n";
    for (std::size_t i = 0; i < world.disks.size(); i++) {
        const Disk& disk = world.disks[i];
        if (disk.there && disk.bus >= 0) // the order of the names varies
            text +=
                format(i % 2 == 0 ? "<%s %s> at scbus%d target 0 lun 0 (%s,pass%zu)\n"
                                  : "<%s %s>  at scbus%d target 1 lun 0 (%s,probe,pass%zu)\n",
                       disk.model.c_str(), disk.firmware.c_str(), disk.bus, disk.name.c_str(), i);
    }
    return text;
}

Printed identify(const World& world, const std::string& name) {
    const Disk* disk = diskNamed(world, name);
    const bool nvme = name.compare(0, 3, "nda") == 0;
    if (disk == nullptr || !disk->there || (!disk->ata && name.compare(0, 2, "da") == 0))
        return {1, ""};
    if (nvme)
        return {0, "Controller Capabilities/Features\n====\nModel Number:                " +
                       disk->model + "\n"};
    const bool old = world.release == 10;
    const std::string row =
        format("%s %s\n", old ? "data set management (TRIM)    " : "Data Set Management (DSM/TRIM)",
               disk->ssd ? "yes" : "no");
    return {0, "pass0: <" + disk->model + "> ATA-9 SATA 3.x device\n\nprotocol              ATA\n" +
                   "device model          " + disk->model + "\nserial number         " +
                   disk->serial + "\ncylinders             16383\n\n" +
                   "Feature                      Support  Enabled   Value           Vendor\n" +
                   "SMART                          yes\tyes\n" + row};
}

std::string gpart(const World& world) {
    std::string text;
    for (const Disk& disk : world.disks) {
        if (!disk.there || disk.partitions.empty())
            continue;
        text += "=>       34  234441581    " + disk.name + "  GPT  (112G) [CORRUPT]\n" +
                "         34       1024          - free -  (512K)\n";
        for (std::size_t i = 0; i < disk.partitions.size(); i++)
            text += format("  %9zu       1024  %s  freebsd-ufs  %s(%s)\n", i * 1024,
                           disk.partitions[i].name.c_str(), i == 1 ? "[active]  " : "",
                           disk.partitions[i].size.c_str());
        text += "\n";
    }
    return text;
}

template <class Row>
void eachPartition(const World& world, Use use, Row row) {
    for (const Disk& disk : world.disks)
        for (const Partition& partition : disk.partitions)
            if (disk.there && partition.use == use)
                row(partition);
}

std::string tableRow(const Partition& one, const std::string& mounted) {
    return format("/dev/%-12s %12lld %10lld %10lld    18%%%s\n", one.name.c_str(),
                  static_cast<long long>(one.total), static_cast<long long>(one.used),
                  static_cast<long long>(one.available), mounted.c_str());
}

std::string df(const World& world) {
    std::string text = "Filesystem        1024-blocks       Used      Avail Capacity  Mounted on\n"
                       "devfs                       1          1          0   100%    /dev\n"
                       "zroot/ROOT/ada0p1   213651356    8123540  205527816     4%    /\n";
    eachPartition(world, Use::mounted, [&](const Partition& one) {
        text += tableRow(one, "    /old " + one.name + " data");
    });
    return text;
}

std::string swapinfo(const World& world) {
    std::string text = "Device             1K-blocks       Used      Avail Capacity\n";
    int devices = 0;
    eachPartition(world, Use::swap, [&](const Partition& one) {
        text += tableRow(one, "");
        devices++;
    });
    return devices > 1 ? text + "Total                4194304      36864    4157440     1%\n"
                       : text;
}

Printed newfs(const World& world, const std::string& device) {
    for (const Disk& disk : world.disks)
        for (const Partition& one : disk.partitions)
            if (disk.there && "/dev/" + one.name == device && one.block != 0)
                return {0,
                        format("%sMB %s: 110375.0MB (226048000 sectors) block size %d, fragment "
                               "size 4096\n\tusing 4 cylinder groups of 27593.03MB, 883000 blks\n"
                               "super-block backups (for fsck_ffs -b #) at:\n 192, 56512000\n",
                               world.release == 12 ? "density increased from 1 to 4096\n" : "",
                               device.c_str(), one.block)};
    return {1, ""};
}

Printed fdisk(const World& world, const std::string& name) {
    const Disk* disk = diskNamed(world, name);
    if (disk == nullptr || !disk->there)
        return {1, ""};
    const std::string geometry =
        format("cylinders=%d heads=%d sectors/track=%d (1008 blks/cyl)\n\n", disk->cylinders,
               disk->heads, disk->track);
    return {0, "******* Working on device /dev/" + name + " *******\n" +
                   "parameters extracted from in-core disklabel are:\n" + geometry +
                   "parameters to be used for BIOS calculations are:\n" +
                   "cylinders=1 heads=2 sectors/track=3 (6 blks/cyl)\n"};
}

std::string graid(const World& world) {
    std::string text;
    for (const Rste& volume : world.volumes) {
        const int count = static_cast<int>(volume.members.size());
        text += format("Geom name: %s\nState: %s\nMetadata: Intel\nProviders:\n1. Name: %s\n"
                       "   Mediasize: 536866816 (512M)\n   Mode: r0w0e0\n   Dirty: No\n"
                       "   State: %s\n   Strip: 131072\n   Components: %d\n"
                       "   Transformation: RAID%d\n   RAIDLevel: RAID%d\n   Label: vol0\n"
                       "Consumers:\n",
                       volume.geom.c_str(), volume.state.c_str(), volume.provider.c_str(),
                       volume.state.c_str(), count, volume.level, volume.level);
        int place = 0;
        for (const std::string& member : volume.members)
            if (++place; diskNamed(world, member)->there)
                text += format("%d. Name: %s\n   Mediasize: 536870912 (512M)\n   ReadErrors: 0\n"
                               "   Subdisks: r0(vol0):%d@0\n   State: ACTIVE (ACTIVE)\n",
                               place, member.c_str(), place);
        text += "\n";
    }
    return text;
}

const char* lspci() {
    return "00:00.0 Host bridge: Fabrikam Corporation X7 Memory Hub (rev 07)\n"
           "\tCapabilities: [400] Data Link Feature <?>\n\tKernel driver in use: ata_piix\n\n"
           "00:14.0 USB controller: Fabrikam Corporation Q87 USB xHCI Host Controller #2 (rev 05)\n"
           "\tFlags: bus master, fast devsel, latency 0\n\n"
           "00:1f.2 SATA controller: Fabrikam Corporation Q87 6-Port SATA: AHCI mode #1 (rev 05)\n";
}

struct SmartWords {
    int status;
    const char* text;
};
SmartWords healthWords(Health health) {
    switch (health) {
    case Health::well:
        return {0, "SMART overall-health self-assessment test result: PASSED\n\n"};
    case Health::predicted:
        return {32, "SMART overall-health self-assessment test result: PASSED\n"
                    "Please note the following marginal Attributes:\n"
                    "ID# ATTRIBUTE_NAME          FLAG     VALUE WORST THRESH\n"
                    "190 Airflow_Temperature_Cel 0x0022   058   030   045    In_the_past 42\n\n"};
    case Health::warned:
        return {4, "SMART Status not supported: Incomplete response, ATA output registers missing\n"
                   "SMART overall-health self-assessment test result: PASSED\n"
                   "Warning: This result is based on an Attribute check.\n\n"};
    case Health::failed:
        return {24, "SMART overall-health self-assessment test result: FAILED!\n"
                    "Drive failure expected in less than 24 hours. SAVE ALL DATA.\n"
                    "No failed Attributes found.\n\n"};
    default:
        return {4, "\n"};
    }
}

Printed smartText(const World& world, const Disk& disk, bool attributes) {
    const std::string banner =
        format("smartctl %s r5338 [FreeBSD %d.1-RELEASE amd64] (local "
               "build)\nCopyright (C) 2002-22, Bruce Allen\n\n",
               world.smartctl == 6 ? "6.3 2014-07-26" : "7.3 2022-02-28", world.release);
    if (!disk.there)
        return {2, banner + "Smartctl open device: /dev/" + disk.name +
                       " failed: No such file or directory\n"};
    if (disk.usb)
        return {1, banner + "/dev/" + disk.name + ": Unknown USB bridge [0x0930:0x6544 (0x100)]\n" +
                       "Please specify device type with the -d option.\n\n"};
    const auto [status, words] = healthWords(disk.health);
    std::string text =
        banner + "=== START OF INFORMATION SECTION ===\nDevice Model:     " + disk.model +
        "\nSerial Number:    " + disk.serial + "\nFirmware Version: " + disk.firmware + "\n";
    text += disk.ssd ? "Rotation Rate:    Solid State Device\n"
                     : format("Rotation Rate:    %d rpm\n", disk.rpm);
    text +=
        std::string("SMART support is: ") +
        (disk.health == Health::silent ? "Unavailable - device lacks SMART capability.\n\n"
                                       : "Enabled\n\n=== START OF READ SMART DATA SECTION ===\n");
    text += words;
    if (attributes && disk.temperature >= 0 && disk.health != Health::silent)
        text += format("SMART Attributes Data Structure revision number: 16\n"
                       "ID# ATTRIBUTE_NAME          FLAG     VALUE WORST THRESH TYPE      UPDATED\n"
                       "190 Airflow_Temperature_Cel 0x0032   067   053   ---    Old_age   Always   "
                       "    -       99\n194 Temperature_Celsius     0x0022   067   053   000    "
                       "Old_age   Always       -       %d%s\n",
                       disk.temperature, world.smartctl == 6 ? "" : " (Min/Max 19/47 #12)");
    return {status, text};
}

} // namespace

const Disk* diskNamed(const World& world, const std::string& name) {
    const auto found = std::find_if(world.disks.begin(), world.disks.end(),
                                    [&](const Disk& disk) { return disk.name == name; });
    return found == world.disks.end() ? nullptr : &*found;
}

Printed smartAnswer(const World& world, const std::string& device, bool attributes) {
    if (const Disk* disk = diskNamed(world, device))
        return smartText(world, *disk, attributes);
    Disk behind{device, "", "", ""};
    behind.there = false;
    for (const Controller& controller : world.controllers)
        for (const Drive& drive : controller.drives)
            if (controller.there && drive.there && format("pass%d", drive.device_id) == device) {
                behind = {device, drive.serial, drive.model, drive.firmware};
                behind.health = drive.health;
            }
    return smartText(world, behind, attributes);
}

Printed diskAnswer(const World& world, const std::string& program, const std::string& command) {
    const std::string last = command.substr(command.rfind(' ') + 1);
    if (program == "smartctl")
        return smartAnswer(world, last.substr(last.rfind('/') + 1),
                           command.find(" -A ") != std::string::npos);
    if (command == "geom disk list")
        return {0, geomList(world)};
    if (command == "camcontrol devlist")
        return {0, devlist(world)};
    if (program == "camcontrol")
        return identify(world, last);
    if (command == "gpart show -p")
        return {0, gpart(world)};
    if (program == "fdisk")
        return fdisk(world, last);
    if (command == "df -k -l")
        return {0, df(world)};
    if (command == "swapinfo -k")
        return {0, swapinfo(world)};
    if (program == "newfs")
        return newfs(world, last);
    if (command == "graid list")
        return {0, graid(world)};
    if (command == "lspci -v")
        return {0, lspci()};
    return {64, ""};
}

std::vector<std::string> devNames(const World& world) {
    std::vector<std::string> names = {"null", "nvme0ns2", "nvmefabrics", "ses0"};
    for (const Disk& disk : world.disks) {
        if (!disk.there)
            continue;
        names.push_back(disk.name);
        for (const Partition& partition : disk.partitions)
            names.push_back(partition.name);
    }
    for (const Nvme& nvme : world.nvmes)
        if (nvme.there)
            for (const char* end : {"", "ns1"})
                names.push_back(format("nvme%d", nvme.number) + end);
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace sim
