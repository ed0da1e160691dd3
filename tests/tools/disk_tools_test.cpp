// What is read out of the answers of the programs that tell of disks.
#include "storage/drive_index.h"
#include "storage/smart_health.h"
#include "tools/camcontrol.h"
#include "tools/geom.h"
#include "tools/lspci.h"
#include "tools/swapinfo.h"

#include <gtest/gtest.h>

namespace {

std::string shown(std::optional<std::uint64_t> number) {
    return number.has_value() ? std::to_string(*number) : "-";
}

std::string smartctl(std::string_view text) {
    const smart_facts told = parseSmartctl(text);
    return told.health + '|' + told.serial + '|' + told.firmware + '|' + told.rotation + '|' +
           told.temperature + (told.unknown_usb_bridge ? " USB" : "") +
           (told.recognised ? "" : " unknown");
}

std::string geom(std::string_view text) {
    std::string told;
    for (const geom_disk& disk : parseGeomDisks(text))
        told += disk.name + '=' + shown(disk.bytes) + ' ';
    return told;
}

std::string devlist(std::string_view text) {
    std::string told;
    for (const cam_device& device : parseDevlist(text))
        told += device.bus + ':' + device.words.front() + '-' + device.words.back() + ' ';
    return told;
}

std::string identify(std::string_view text) {
    const identify_facts told = parseIdentify(text);
    return told.has_model ? told.model + (told.trim ? " SSD" : " HDD") : "";
}

std::string lspci(std::string_view text) {
    const disk_controllers told = parseLspci(text);
    return told.usb + '|' + told.ata;
}

// What df tells of the device on the first line.
std::string df(std::string_view text) {
    const std::size_t end = text.find('\n');
    const space_table table = parseSpaceTable(text.substr(end + 1));
    const auto use = useOf(table, text.substr(0, end));
    return (isSwap(table, text.substr(0, end)) ? "swap " : "") +
           (use.has_value() ? std::to_string(use->total) + ' ' + std::to_string(use->used) + ' ' +
                                  std::to_string(use->available)
                            : "");
}

// The slot of the serial on the first line.
std::string driveMap(std::string_view text) {
    const std::size_t end = text.find('\n');
    return parseDriveMap(text.substr(end + 1), text.substr(0, end));
}

#define RESULT     "SMART overall-health self-assessment test result: "
#define ATTRIBUTES "\nSMART Attributes Data Structure revision number: 16\n"
#define DF_ROWS                                                                                    \
    "\nFilesystem  1024-blocks  Used  Avail Capacity\n/dev/a2 253678 242170 -8786 104% /\n"        \
    "/dev/a3.long-name\n\n   100 50 50 50% /x\n/dev/a4.eli 7 7 7 1% /\n/dev/a4 8 8 8 1% /\n"       \
    "/dev/a4.b 9 9 9 1% /\n/dev/a5 a b 20 5 15 25% /a b\n/dev/a6 1 2 "                             \
    "99999999999999999999\n/dev/a7"
#define MAP "\nHdd count,3\nxS1,1\nS1x,2\nS1 ,3\nS\x01;3,4\nS5,a,7\nS6"

TEST(DiskTools, Readings) {
    const struct {
        std::string (*read)(std::string_view text);
        const char *text, *told;
    } rows[] = {
        {smartctl,
         "smartctl 7.3\nDevice Model: test result: FAILED!\nSerial Number:  a;b:c \nSerial Number: "
         "2\nFirmware Version: 2.5+\nRotation Rate:    7200 rpm\n\n" RESULT "PASSED\n" ATTRIBUTES
         "194 Temperature_Celsius 0 72 60 0 Old_age Always - 31 (Min/Max 9/44)\n"
         "194 Temperature_Celsius 1 2 3 4 5 6 7 8\n",
         "PASSED|abc|2.5+|7200 rpm|31"},
        {smartctl,
         RESULT "PASSED\nWarning: This result is based on an Attribute check.\n" ATTRIBUTES,
         "PASSED This result is based on an Attribute check.||||"},
        {smartctl, RESULT "PASSED\nSee vendor-specific Attribute list for x.\n" ATTRIBUTES,
         "PASSED See vendor-specific Attribute list for x.||||"},
        {smartctl, RESULT "FAILED!\nSAVE ALL DATA.\nFailed:\nID", "FAILED! SAVE ALL DATA.||||"},
        {smartctl, "SMART Health Status: OK\nCurrent Drive Temperature: 4 C\n", "OK||||"},
        {smartctl, "SMART Health Status: OK\n \nElements in list: 0\n", "OK||||"},
        {smartctl, "smartctl 7\n\n/dev/da0: Unknown USB bridge [0x04:0x08]\n", "|||| USB"},
        {smartctl, "Serial Number: S1", "|S1||| unknown"},
        {geom,
         "Geom name: cd0\n1. Name: cd0\n   Mediasize: 0 (0B)\n\nGeom name: ada0\n   Mediasize: 512 "
         "(1K)\n   descr: Geom name: ada9\nGeom name: nda0\n   descr: Mediasize: 5\nGeom name:\n"
         "Geom name: ada0\n   Mediasize: 7 (7B)\nGeom name: da0\nMediasize: 99999999999999999999",
         "cd0=0 ada0=512 nda0=- da0=- "},
        {devlist, "<x> at scbus9 (ada0) >  at scbus0 (pass0,ada0)\n<x> at scbus12 (ada1)\nses0\n",
         "0:at-ada0 12:at-ada1 :ses0-ses0 "},
        {identify, "Device Model      A;B 1 \nData Set Management (DSM/TRIM) yes\n", "AB 1 SSD"},
        {identify, "device model M\ndata set management (TRIM) no\n1 2 3 (TRIM) yes", "M HDD"},
        {identify, "Model Number:      QX NVMe Ctrl\n pass0: device model\n", ""},
        {df, "/dev/a2" DF_ROWS, "swap 259766272 247982080 -8996864"},
        {df, "/dev/a3" DF_ROWS, "102400 51200 51200"},
        {df, "/dev/a4" DF_ROWS, "swap 8192 8192 8192"},
        {df, "/dev/a5" DF_ROWS, "swap "},
        {df, "/dev/a5 a b" DF_ROWS, "20480 5120 15360"},
        {df, "/dev/a6" DF_ROWS, "swap "},
        {df, "/dev/a7" DF_ROWS, "swap "},
        {df, "/dev/a" DF_ROWS, ""},
        {lspci,
         "00:00.0 Host bridge: X\n\tCapabilities: [400] Data Link Feature <?>\n\tKernel driver in "
         "use: ata_piix\n00:14.0 USB controller: Q87 USB xHCI Host (rev 05)\n0000:00:1f.2 SATA "
         "controller: Q87: AHCI; mode #1 (rev 04)\n00:1f.3 SATA controller: no\n",
         "Q87 USB|Q87  AHCI mode"},
        {lspci, "00:1d.0 USB: HCIx UHCI\n01:00.0 IDE [ATA]: x #y\n",
         "00 1d.0 USB  HCIx|01 00.0 IDE [ATA]  x #y"},
        {driveMap, "S1" MAP, "3"},
        {driveMap, "1" MAP, "1"},
        {driveMap, "S3" MAP, "4"},
        {driveMap, "S5,a" MAP, "7"},
        {driveMap, "S6" MAP, ""},
        {driveMap, "Hdd count" MAP, ""},
        {driveMap, MAP, ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.read(row.text), row.told) << row.text;
    EXPECT_EQ(parseSmartctl(rows[1].text, true).health, "PASSED");
}

} // namespace
