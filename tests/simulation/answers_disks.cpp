// What geom, camcontrol, gpart, fdisk, df, swapinfo, newfs, lspci, smartctl and graid print.
#include "world.h"

#include <algorithm>

namespace sim {

namespace {

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
    std::string text =
        "<AHCI SGPIO Enclosure 1.00 0001>   at scbus99 target 0 lun 0 (ses0,pass9)\n";
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
        text += say("=>       34  234441581    {}  GPT  (112G) [CORRUPT]\n"
                    "         34       1024          - free -  (512K)\n",
                    disk.name);
        for (const Partition& one : disk.partitions)
            text += say("       1024       1024  {}  freebsd-ufs  {}({})\n", one.name,
                        one.block == 0 ? "[active]  " : "", one.size);
        text += "\n";
    }
    return text;
}

// The rows of df or of swapinfo.
std::string usage(const World& world, Use use) {
    std::string text;
    for (const Disk& disk : world.disks)
        for (const Partition& one : disk.partitions)
            if (disk.there && one.use == use)
                text +=
                    say("/dev/{}   {} {} {}    18%", one.name, one.total, one.used, one.available) +
                    (use == Use::swap ? "\n" : "    /old " + one.name + " data\n");
    return text;
}

std::string newfs(const World& world, const Partition& one) {
    return say("{}/dev/{}: 110375.0MB (226048000 sectors) block size {}, fragment size 4096\n"
               "\tusing 4 cylinder groups of 27593.03MB, 883000 blks\nsuper-block backups (for "
               "fsck_ffs -b #) at:\n 192, 56512000\n",
               world.release == 12 ? "density increased from 1 to 4096\n" : "", one.name,
               one.block);
}

std::string fdisk(const Disk& disk) {
    return say("******* Working on device /dev/{} *******\nparameters extracted from in-core "
               "disklabel are:\ncylinders={} heads=16 sectors/track=63 (1008 blks/cyl)\n\n"
               "parameters to be used for BIOS calculations are:\n"
               "cylinders=1 heads=2 sectors/track=3 (6 blks/cyl)\n",
               disk.name, disk.cylinders);
}

std::string graid(const World& world) {
    std::string text;
    for (const Rste& volume : world.volumes) {
        text += say("Geom name: {}\nState: {}\nMetadata: Intel\nProviders:\n1. Name: {}\n"
                    "   Mediasize: 536866816 (512M)\n   Mode: r0w0e0\n   Dirty: No\n   State: {}\n"
                    "   Strip: 131072\n   Components: {}\n   Transformation: RAID{}\n"
                    "   RAIDLevel: RAID{}\n   Label: vol0\nConsumers:\n",
                    volume.geom, volume.state, volume.provider, volume.state, volume.members.size(),
                    volume.level, volume.level);
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
    "\tCapabilities: [400] Data Link Feature <?>\n\tKernel driver in use: ata_piix\n\n"
    "00:14.0 USB controller: Fabrikam Corporation Q87 USB xHCI Host Controller #2 (rev 05)\n"
    "\tFlags: bus master, fast devsel, latency 0\n\n"
    "00:1f.2 SATA controller: Fabrikam Corporation Q87 6-Port SATA: AHCI mode #1 (rev 05)\n";

// By Health: smartctl's exit status and words.
const Printed HEALTH_ANSWERS[] = {
    {0, "SMART overall-health self-assessment test result: PASSED\n\n"},
    {32, "SMART overall-health self-assessment test result: PASSED\n"
         "Please note the following marginal Attributes:\n"
         "ID# ATTRIBUTE_NAME          FLAG     VALUE WORST THRESH\n"
         "190 Airflow_Temperature_Cel 0x0022   058   030   045    In_the_past 42\n\n"},
    {4, "SMART Status not supported: Incomplete response, ATA output registers missing\n"
        "SMART overall-health self-assessment test result: PASSED\n"
        "Warning: This result is based on an Attribute check.\n\n"},
    {24, "SMART overall-health self-assessment test result: FAILED!\n"
         "Drive failure expected in less than 24 hours. SAVE ALL DATA.\n"
         "No failed Attributes found.\n\n"},
    {4, "\n"}};

Printed smartText(const World& world, const Disk& disk, bool attributes) {
    const std::string banner =
        say("smartctl {} r5338 [FreeBSD {}.1-RELEASE amd64] (local build)\n\n",
            world.smartctl == 6 ? "6.3 2014-07-26" : "7.3 2022-02-28", world.release);
    if (disk.usb)
        return {1, banner + "/dev/" + disk.name + ": Unknown USB bridge [0x0930:0x6544 (0x100)]\n" +
                       "Please specify device type with the -d option.\n\n"};
    const auto& [status, words] = HEALTH_ANSWERS[static_cast<int>(disk.health)];
    const bool silent = disk.health == Health::silent;
    std::string text = banner + say("=== START OF INFORMATION SECTION ===\nDevice Model:     {}\n"
                                    "Serial Number:    {}\nFirmware Version: {}\nRotation Rate:    "
                                    "{}\nSMART support is: {}\n\n",
                                    disk.model, disk.serial, disk.firmware,
                                    disk.ssd ? "Solid State Device" : say("{} rpm", disk.rpm),
                                    silent ? "Unavailable - device lacks SMART" : "Enabled");
    text += (silent ? "" : "=== START OF READ SMART DATA SECTION ===\n") + words;
    if (attributes && disk.temperature >= 0 && !silent)
        text += say("ID# ATTRIBUTE_NAME          FLAG     VALUE WORST THRESH TYPE      UPDATED\n"
                    "190 Airflow_Temperature_Cel 0x0032   067   053   ---    Old_age   Always   "
                    "    -       99\n194 Temperature_Celsius     0x0022   067   053   000    "
                    "Old_age   Always       -       {}{}\n",
                    disk.temperature, world.smartctl == 6 ? "" : " (Min/Max 19/47 #12)");
    return {status, text};
}

// Of a disk, or of a drive behind a controller.
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

// A program that is asked about one device.
Printed deviceAnswer(const World& world, const std::string& program, const std::string& device) {
    for (const Disk& disk : world.disks) {
        if (disk.there && disk.name == device && program != "newfs")
            return program == "fdisk" ? Printed{0, fdisk(disk)} : identify(world, disk);
        for (const Partition& one : disk.partitions)
            if (disk.there && one.name == device && program == "newfs" && one.block != 0)
                return {0, newfs(world, one)};
    }
    return {1, ""};
}

} // namespace

const Disk* diskNamed(const World& world, const std::string& name) {
    const auto found = std::find_if(world.disks.begin(), world.disks.end(),
                                    [&](const Disk& disk) { return disk.name == name; });
    return found == world.disks.end() ? nullptr : &*found;
}

Printed diskAnswer(const World& world, const std::string& program, const std::string& command) {
    const std::string device = command.substr(command.find_last_of(" /") + 1);
    const char* const header = "Device             1K-blocks       Used      Avail Capacity\n";
    if (program == "smartctl")
        return smartctl(world, device, command.find(" -A ") != std::string::npos);
    if (command == "geom disk list")
        return {0, geomList(world)};
    if (command == "camcontrol devlist")
        return {0, devlist(world)};
    if (program == "camcontrol" || program == "fdisk" || program == "newfs")
        return deviceAnswer(world, program, device);
    if (command == "gpart show -p")
        return {0, gpart(world)};
    if (command == "df -k -l")
        return {0, header + say("zroot/ROOT/ada0p1 213651 8123 205527     4%    /\n{}",
                                usage(world, Use::mounted))};
    if (command == "swapinfo -k")
        return {0, header + usage(world, Use::swap) + "Total  4194304 36864 4157440     1%\n"};
    if (command == "graid list")
        return {0, graid(world)};
    return command == "lspci -v" ? Printed{0, LSPCI} : Printed{64, ""};
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
                names.push_back(say("nvme{}{}", nvme.number, end));
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace sim
