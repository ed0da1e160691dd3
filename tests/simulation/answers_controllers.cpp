// What sas3ircu and storcli print, and which program speaks at all.
#include "world.h"

namespace sim {

namespace {

const std::string RULE = std::string(72, '-') + "\n";

std::string field(const char* label, const std::string& value) {
    return format("  %-40s: ", label) + value + "\n";
}

// The word of a state with its code, as "Optimal (OPT)".
std::string coded(const std::string& state) {
    return state + " (" + state.substr(0, 3) + ")";
}

const Controller* numbered(const World& world, int number, bool sas) {
    for (const Controller& one : world.controllers)
        if (one.there && one.number == number && one.isSas() == sas)
            return &one;
    return nullptr;
}

std::string sasDrive(const Drive& drive) {
    const bool bare = drive.state == "Missing" || drive.state == "Standby";
    std::string text =
        "Device is a Hard disk\n" + field("Enclosure #", format("%d", drive.enclosure)) +
        field("Slot #", format("%d", drive.slot)) + field("SAS Address", "4433221-1-0200-0000") +
        field("State", coded(drive.state));
    if (!bare)
        text += field("Size (in MB)/(in sectors)",
                      format("%lld/7501476527", static_cast<long long>(drive.megabytes)));
    text += field("Manufacturer", "ATA     ");
    if (!bare)
        text += field("Model Number", drive.model) + field("Firmware Revision", drive.firmware);
    return text + field("Serial No", drive.serial) +
           field("Unit Serial No(VPD)", "VPD" + drive.serial) + field("GUID", "5002538f01b17289") +
           field("Protocol", "SATA") + field("Drive Type", drive.type) + "\n";
}

std::string sasVolume(const Controller& controller, const Volume& volume, int title) {
    std::string text = format("IR volume %d\n", title) +
                       field("Volume ID", format("%d", volume.id)) +
                       field("Status of volume", coded(volume.state)) +
                       field("Volume wwid", "09cbec37412b0bc7") + field("RAID level", volume.level);
    if (volume.level != "Unknown")
        text += field("Size (in MB)", format("%lld", static_cast<long long>(volume.megabytes)));
    text += field("Physical hard disks", "");
    for (std::size_t i = 0; i < volume.members.size(); i++) {
        const Drive& drive = controller.drives.at(static_cast<std::size_t>(volume.members[i]));
        text += field(format("PHY[%zu] Enclosure#/Slot#", i).c_str(),
                      format("%d:%d", drive.enclosure, drive.slot));
    }
    return text;
}

std::string sasDisplay(const Controller& controller) {
    const bool ir = controller.kind == Kind::sas_ir;
    std::string text =
        "Avago Technologies SAS3 IR Configuration Utility.\nVersion 17.00.00.00 (2018.04.02)\n\n" +
        format("Read configuration has been initiated for controller %d\n", controller.number) +
        RULE + "Controller information\n" + RULE + field("Controller type", "SAS3008") +
        field("BIOS version", "8.35.00.00") + field("Firmware version", "15.00.00.00") +
        field("Channel description", "1 Serial Attached SCSI") + field("Slot", "Unknown") +
        field("RAID Support", ir ? "Yes" : "No") + RULE + "IR Volume information\n" + RULE;
    int title = 1;
    for (const Volume& volume : controller.volumes)
        text += sasVolume(controller, volume, title++);
    text += RULE + "Physical device information\n" + RULE + "Initiator at ID #0\n\n";
    for (const Drive& drive : controller.drives)
        if (drive.there)
            text += sasDrive(drive);
    text += "Device is a Enclosure services device\n" + field("Enclosure #", "2") +
            field("Slot #", "36") + field("State", coded("Standby")) +
            field("Manufacturer", "PMCSIERA") + field("Serial No", "PMCSLERDC");
    return text + RULE + "Enclosure information\n" + RULE + field("Enclosure#", "1") + RULE +
           "SAS3IRCU: Command DISPLAY Completed Successfully.\n";
}

std::string sasList(const World& world) {
    const std::string header =
        "\n         Adapter      Vendor  Device                       SubSys\n"
        " Index    Type          ID      ID    Pci Address          Ven ID\n"
        " -----  ------------  ------  ------  -----------------    ------\n";
    std::string text;
    for (const Controller& one : world.controllers)
        if (one.there && one.isSas())
            text += header +
                    format("   %d     SAS3008       1000h   97h    00h:03h:00h:00h\n", one.number);
    return text;
}

// ---- storcli

std::string preamble(const World& world, int number) {
    return (world.storcli == 7
                ? "CLI Version = 007.1211.0000.0000 Nov 07, 2019\nOperating system = FreeBSD\n"
                : "") +
           format("Controller = %d\nStatus = Success\nDescription = None\n\n", number);
}

std::string failure(int number, const char* why) {
    return format("Controller = %d\nStatus = Failure\nDescription = %s\n\n", number, why);
}

std::string table(const std::string& title, const std::string& header, const std::string& rows) {
    return (title.empty() ? "" : title + " :\n====\n\n") + RULE + header + "\n" + RULE + rows +
           RULE +
           "\nEID=Enclosure Device ID|Onln=Online|UBad-Unconfigured "
           "Bad|OfLn=OffLine|Dgrd=Degraded\n\n";
}

std::string driveHeader(const World& world) {
    return std::string(
               "EID:Slt DID State   DG          Size Intf Med SED PI SeSz Model               Sp") +
           (world.storcli == 7 ? " Type" : " ");
}

std::string driveRow(const World& world, const Drive& drive) {
    const std::string place = drive.enclosure < 0 ? format(" :%d", drive.slot)
                                                  : format("%d:%d", drive.enclosure, drive.slot);
    return format("%-7s %3d %-7s %2s %7lld.%02lld GB SATA %s N   N  %s %-19s U %s\n", place.c_str(),
                  drive.device_id, drive.state.c_str(), drive.slot % 3 == 0 ? "-" : "0",
                  static_cast<long long>(drive.megabytes / 1024),
                  static_cast<long long>(drive.megabytes % 100), drive.type.c_str(),
                  drive.slot % 4 == 3 ? "4 KB" : "512B", drive.model.c_str(),
                  world.storcli == 7 ? "-" : "");
}

std::string driveRows(const World& world, const Controller& controller) {
    std::string rows;
    for (const Drive& drive : controller.drives)
        if (drive.there)
            rows += driveRow(world, drive);
    return rows;
}

constexpr const char* VOLUME_HEADER =
    "DG/VD TYPE  State Access Consist Cache Cac sCC      Size Name";
std::string volumeRow(const Volume& volume) {
    return format("%-5s %-5s %-5s RW     Yes     RWBD  -   ON  %6lld.0 TB %s\n",
                  format("0/%d", volume.id).c_str(), volume.level.c_str(), volume.state.c_str(),
                  static_cast<long long>(volume.megabytes), "a b");
}

std::string storcliShow(const World& world) {
    std::string rows;
    int count = 0;
    for (const Controller& one : world.controllers)
        if (one.there && !one.isSas()) {
            rows += format("%3d %-23s     8   4   1     0   1     0 Opt On  1&2   Y    3 Opt\n",
                           one.number, storcliModel(one).c_str());
            count++;
        }
    std::string text = world.storcli == 7 ? "CLI Version = 007.1211 Nov 07, 2019\n" : "";
    text +=
        format("Status Code = 0\nStatus = Success\nDescription = None\n\nNumber of Controllers = "
               "%d\nHost Name = %s\nOperating System  = FreeBSD\n\n",
               count, world.host.c_str());
    return count == 0
               ? text
               : text + table("System Overview",
                              "Ctl Model                   Ports PDs DGs DNOpt VDs Hlth", rows);
}

std::string cardShow(const World& world, const Controller& card) {
    std::string volumes;
    for (const Volume& volume : card.volumes)
        volumes += volumeRow(volume);
    std::string text = "Generating detailed summary of the adapter, it may take a while.\n\n" +
                       preamble(world, card.number) + "Product Name = " + storcliModel(card) +
                       "\nSerial Number = \nBIOS Version = 6.22.03.0\nFW Version = 4.270 beta\n"
                       "Device Interface = SAS-12G\n\n";
    if (!volumes.empty())
        text += table("VD LIST", VOLUME_HEADER, volumes);
    const std::string rows = driveRows(world, card);
    if (card.number % 2 == 1) // repeats the drives
        text += table("JBOD LIST", driveHeader(world), rows);
    return rows.empty() ? text : text + table("PD LIST", driveHeader(world), rows);
}

Printed cardVolumes(const World& world, const Controller& card) {
    std::string text = preamble(world, card.number);
    if (card.volumes.empty())
        return {0, text + "Description = No VD's have been configured.\n"};
    for (const Volume& volume : card.volumes) {
        std::string members;
        for (const int place : volume.members)
            members += driveRow(world, card.drives.at(static_cast<std::size_t>(place)));
        text +=
            table(format("/c%d/v%d", card.number, volume.id), VOLUME_HEADER, volumeRow(volume)) +
            table(format("PDs for VD %d", volume.id), driveHeader(world), members) +
            format("VD%d Properties :\n====\nOS Drive Name = %s\n\n", volume.id,
                   volume.name.c_str());
    }
    return {0, text};
}

std::string driveFacts(const World& world, const Controller& card) {
    std::string text = preamble(world, card.number);
    for (const Drive& drive : card.drives) {
        if (!drive.there)
            continue;
        const std::string path =
            format("Drive /c%d/e%d/s%d", card.number, drive.enclosure, drive.slot);
        text += table(path, driveHeader(world), driveRow(world, drive)) + path +
                " - Detailed Information :\n=====\n\n" + path +
                " State :\n=====\nShield Counter = 0\n\n" + path + " Device attributes :\n=====\n" +
                "SN =         " + drive.serial +
                "\nManufacturer Id = ATA     \nModel Number = " + drive.model +
                "\nWWN = " + drive.wwn + "\nFirmware Revision = " + drive.firmware +
                "     \nFirmware Release Number = N/A\n\n";
    }
    return text;
}

} // namespace

std::string storcliModel(const Controller& controller) {
    return controller.kind == Kind::megaraid
               ? (controller.number % 2 == 0 ? "AVAGOMegaRAIDSAS9361-8i" : "LSI3108 onboard")
               : format("Northwind RAID %d", controller.number);
}

Printed sas3ircuAnswer(const World& world, const std::string& command) {
    if (command == "sas3ircu list") {
        const std::string rows = sasList(world);
        return rows.empty() ? Printed{1, "SAS3IRCU: MPTLib2 Error 1\n"}
                            : Printed{0, "Avago Technologies SAS3 IR Configuration Utility.\n" +
                                             rows + "SAS3IRCU: Utility Completed Successfully.\n"};
    }
    const Controller* one = numbered(world, std::atoi(command.c_str() + 9), true);
    return one == nullptr ? Printed{1, ""} : Printed{0, sasDisplay(*one)};
}

Printed storcliAnswer(const World& world, const std::string& command) {
    if (command == "storcli show")
        return {0, storcliShow(world)};
    const std::string rest = command.substr(8); // "/c0 /eall /sall show"
    const std::size_t digits = rest.find_first_not_of("0123456789", 2);
    const int number = std::atoi(rest.c_str() + 2);
    const std::string form = digits == std::string::npos ? "" : rest.substr(digits);
    const Controller* one = numbered(world, number, false);
    if (one == nullptr)
        return {1, failure(number, "Controller not found")};
    const bool enclosed = !one->drives.empty() && one->drives.front().enclosure >= 0;
    if (form == " show")
        return {0, cardShow(world, *one)};
    if (form == "/vall show all")
        return cardVolumes(world, *one);
    const bool in_enclosures = form.find("eall") != std::string::npos;
    const std::string rows = in_enclosures == enclosed ? driveRows(world, *one) : "";
    if (rows.empty())
        return {in_enclosures ? 1 : 0, failure(number, "No drive found!")};
    if (form == " /eall /sall show" || form == " /sall show")
        return {0, preamble(world, number) + table("Drive Information", driveHeader(world), rows)};
    return {0, driveFacts(world, *one)};
}

std::optional<Printed> answer(const World& world, const std::string& command) {
    const std::string program = command.substr(0, command.find(' '));
    if (program == "storcli")
        return world.has_storcli ? std::optional(storcliAnswer(world, command)) : std::nullopt;
    if (program == "sas3ircu")
        return world.has_sas3ircu ? std::optional(sas3ircuAnswer(world, command)) : std::nullopt;
    for (const char* other : {"ifconfig", "netstat", "pciconf", "uname", "hostname"})
        if (program == other)
            return networkAnswer(world, command);
    return diskAnswer(world, program, command);
}

} // namespace sim
