// What sas3ircu and storcli print, and which program speaks at all.
#include "world.h"

#include <algorithm>

namespace sim {

namespace {

const std::string RULE = std::string(72, '-') + "\n";
const char* const CLI = "CLI Version = 007.1211 Nov 07, 2019\nOperating system = FreeBSD\n";

// The word of a state with its code, as "Optimal (OPT)".
std::string coded(const std::string& state) {
    return say("{} ({})", state, state.substr(0, 3));
}

std::string sasDrive(const Drive& drive) {
    const bool bare = drive.state == "Missing" || drive.state == "Standby";
    const std::string size = say("  Size (in MB)/(in sectors)   : {}/75014\n", drive.megabytes);
    const std::string model =
        say("  Model Number     : {}\n  Firmware Revision     : {}\n", drive.model, drive.firmware);
    return say(
        "Device is a Hard disk\n  Enclosure #     : {}\n  Slot #     : {}\n  SAS Address   : "
        "4433221-1-0200-0000\n  State     : {}\n{}  Manufacturer     : ATA     \n{}"
        "  Serial No     : {}\n  Unit Serial No(VPD)  : VPD{}\n  Drive Type    : {}\n\n",
        drive.enclosure, drive.slot, coded(drive.state), bare ? "" : size, bare ? "" : model,
        drive.serial, drive.serial, drive.type);
}

std::string sasVolume(const Controller& controller, const Volume& volume) {
    std::string text =
        say("IR volume {}\n  Volume ID     : {}\n  Status of volume     : {}\n  Volume wwid     : "
            "09cbec37412b0bc7\n  RAID level      : {}\n{}  Physical hard disks      : \n",
            volume.id - 321, volume.id, coded(volume.state), volume.level,
            volume.level == "Unknown" ? "" : say("  Size (in MB)  : {}\n", volume.megabytes));
    for (std::size_t i = 0; i < volume.members.size(); i++) {
        const Drive& drive = controller.drives.at(volume.members[i]);
        text += say("  PHY[{}] Enclosure#/Slot#  : {}:{}\n", i, drive.enclosure, drive.slot);
    }
    return text;
}

std::string sasDisplay(const Controller& controller) {
    std::string volumes, drives;
    for (const Volume& volume : controller.volumes)
        volumes += sasVolume(controller, volume);
    for (const Drive& drive : controller.drives)
        drives += drive.there ? sasDrive(drive) : "";
    return say("Avago Technologies SAS3 IR Configuration Utility.\nVersion 17.00.00.00 (2018.04.02)"
               "\n\nRead configuration has been initiated for controller {}\n{}Controller "
               "information\n{}  Controller type   : SAS3008\n  BIOS version   : 8.35.00.00\n  "
               "Firmware version   : 15.00.00.00\n  Channel description     : 1 Serial Attached "
               "SCSI\n  Slot    : Unknown\n  RAID Support    : {}\n{}IR Volume information\n{}{}"
               "{}Physical device information\n{}Initiator at ID #0\n\n{}Device is a Enclosure "
               "services device\n  Enclosure #     : 2\n  Slot #    : 36\n  State    : Standby "
               "(SBY)\n  Manufacturer    : PMCSIERA\n  Serial No    : PMCSLERDC\n{}Enclosure "
               "information\n{}SAS3IRCU: Command DISPLAY Completed Successfully.\n",
               controller.number, RULE, RULE, controller.kind == Kind::sas_ir ? "Yes" : "No", RULE,
               RULE, volumes, RULE, RULE, drives, RULE, RULE);
}

Printed sasList(const World& world) {
    std::string rows;
    for (const Controller& one : world.controllers)
        if (one.there && one.isSas())
            rows += say("\n Index    Type          ID      ID    Pci Address          Ven ID\n"
                        " -----  ------------  ------  ------  -----------------    ------\n"
                        "   {}     SAS3008       1000h   97h    00h:03h:00h:00h\n",
                        one.number);
    return rows.empty() ? Printed{1, "SAS3IRCU: MPTLib2 Error 1\n"}
                        : Printed{0, "Avago Technologies SAS3 IR Configuration Utility.\n" + rows +
                                         "SAS3IRCU: Utility Completed Successfully.\n"};
}

std::string preamble(const World& world, int number) {
    return say("{}Controller = {}\nStatus = Success\nDescription = None\n\n",
               world.storcli == 7 ? CLI : "", number);
}

Printed failure(int status, int number, const char* why) {
    return {status, say("Controller = {}\nStatus = Failure\nDescription = {}\n\n", number, why)};
}

std::string table(const std::string& title, const std::string& header, const std::string& rows) {
    return title + " :\n====\n\n" + RULE + header + "\n" + RULE + rows + RULE +
           "\nEID=Enclosure Device ID|Onln=Online|UBad-Unconfigured Bad|OfLn=OffLine\n\n";
}

std::string driveTable(const World& world, const std::string& title, const std::string& rows) {
    const std::string header =
        "EID:Slt DID State   DG          Size Intf Med SED PI SeSz Model               Sp ";
    return table(title, header + (world.storcli == 7 ? "Type" : ""), rows);
}

std::string driveRow(const World& world, const Drive& drive) {
    const std::string enclosure = drive.enclosure < 0 ? " " : std::to_string(drive.enclosure);
    return format("%-7s %3d %-7s %2s %7d.%02d GB SATA %s N   N  %s %-19s U %s\n",
                  say("{}:{}", enclosure, drive.slot).c_str(), drive.device_id, drive.state.c_str(),
                  drive.slot % 3 == 0 ? "-" : "0", drive.megabytes / 1024, drive.megabytes % 100,
                  drive.type.c_str(), drive.slot % 4 == 3 ? "4 KB" : "512B", drive.model.c_str(),
                  world.storcli == 7 ? "-" : "");
}

std::string driveRows(const World& world, const Controller& controller) {
    std::string rows;
    for (const Drive& drive : controller.drives)
        rows += drive.there ? driveRow(world, drive) : "";
    return rows;
}

std::string volumeTable(const std::string& title, const std::vector<Volume>& volumes) {
    std::string rows;
    for (const Volume& volume : volumes)
        rows += format("0/%-3d %-5s %-5s RW     Yes     RWBD  -   ON  %6d.0 TB a b\n", volume.id,
                       volume.level.c_str(), volume.state.c_str(), volume.megabytes);
    return rows.empty()
               ? ""
               : table(title, "DG/VD TYPE  State Access Consist Cache Cac sCC  Size Name", rows);
}

Printed storcliShow(const World& world) {
    std::string rows;
    for (const Controller& one : world.controllers)
        if (one.there && !one.isSas())
            rows += format("%3d %-23s     8   4   1     0   1     0 Opt On  1&2   Y    3 Opt\n",
                           one.number, storcliModel(one).c_str());
    const std::string text =
        say("{}Status Code = 0\nStatus = Success\nDescription = None\n\nNumber of Controllers = "
            "{}\nHost Name = {}\nOperating System  = FreeBSD\n\n",
            world.storcli == 7 ? CLI : "", std::count(rows.begin(), rows.end(), '\n'), world.host);
    const char* const header = "Ctl Model                   Ports PDs DGs DNOpt VDs Hlth";
    return {0, rows.empty() ? text : text + table("System Overview", header, rows)};
}

std::string cardShow(const World& world, const Controller& card) {
    const std::string rows = driveRows(world, card);
    return "Generating detailed summary of the adapter, it may take a while.\n\n" +
           preamble(world, card.number) + "Product Name = " + storcliModel(card) +
           "\nSerial Number = \nBIOS Version = 6.22.03.0\nFW Version = 4.270 beta\n"
           "Device Interface = SAS-12G\n\n" +
           volumeTable("VD LIST", card.volumes) +
           (card.number % 2 == 1 ? driveTable(world, "JBOD LIST", rows) : "") + // repeats them
           (rows.empty() ? "" : driveTable(world, "PD LIST", rows));
}

std::string cardVolumes(const World& world, const Controller& card) {
    std::string text = preamble(world, card.number);
    for (const Volume& volume : card.volumes) {
        std::string members;
        for (const std::size_t place : volume.members)
            members += driveRow(world, card.drives.at(place));
        text += volumeTable(say("/c{}/v{}", card.number, volume.id), {volume}) +
                driveTable(world, say("PDs for VD {}", volume.id), members) +
                say("VD{} Properties :\n====\nOS Drive Name = {}\n\n", volume.id,
                    say("/dev/mfid{}", volume.id));
    }
    return card.volumes.empty() ? text + "Description = No VD's have been configured.\n" : text;
}

std::string driveFacts(const World& world, const Controller& card) {
    std::string text = preamble(world, card.number);
    for (const Drive& drive : card.drives) {
        if (!drive.there)
            continue;
        const std::string path =
            say("Drive /c{}/e{}/s{}", card.number, drive.enclosure, drive.slot);
        text += driveTable(world, path, driveRow(world, drive)) +
                say("{} - Detailed Information :\n=====\n\n{} State :\n=====\nShield Counter = 0"
                    "\n\n{} Device attributes :\n=====\nSN =         {}\nManufacturer Id = ATA     "
                    "\nModel Number = {}\nWWN = {}\nFirmware Revision = {}     \n"
                    "Firmware Release Number = N/A\n\n",
                    path, path, path, drive.serial, drive.model, drive.wwn, drive.firmware);
    }
    return text;
}

Printed controllerAnswer(const World& world, const Controller& one, const std::string& form) {
    if (one.isSas())
        return {0, sasDisplay(one)};
    if (form == " show")
        return {0, cardShow(world, one)};
    if (form == "/vall show all")
        return {0, cardVolumes(world, one)};
    const bool enclosed = !one.drives.empty() && one.drives.front().enclosure >= 0;
    const bool in_enclosures = form.find("eall") != std::string::npos;
    const std::string rows = in_enclosures == enclosed ? driveRows(world, one) : "";
    if (rows.empty())
        return failure(in_enclosures ? 1 : 0, one.number, "No drive found!");
    if (form == " /eall /sall show" || form == " /sall show")
        return {0, preamble(world, one.number) + driveTable(world, "Drive Information", rows)};
    return {0, driveFacts(world, one)};
}

Printed raidAnswer(const World& world, const std::string& command, bool sas) {
    if (command == "sas3ircu list")
        return sasList(world);
    if (command == "storcli show")
        return storcliShow(world);
    const std::size_t digit = command.find_first_of("0123456789", 8);
    const int number = std::atoi(command.c_str() + digit);
    for (const Controller& one : world.controllers)
        if (one.there && one.number == number && one.isSas() == sas)
            return controllerAnswer(world, one, command.substr(digit + 1));
    return failure(1, number, "Controller not found");
}

} // namespace

std::string storcliModel(const Controller& controller) {
    if (controller.kind == Kind::card)
        return say("Northwind RAID {}", controller.number);
    return controller.number % 2 == 0 ? "AVAGOMegaRAIDSAS9361-8i" : "LSI3108 onboard";
}

std::optional<Printed> answer(const World& world, const std::string& command) {
    const std::string program = command.substr(0, command.find(' '));
    const bool sas = program == "sas3ircu";
    if (sas ? !world.has_sas3ircu : program == "storcli" && !world.has_storcli)
        return std::nullopt;
    if (sas || program == "storcli")
        return raidAnswer(world, command, sas);
    return systemAnswer(world, program, command);
}

} // namespace sim
