// What is read out of answers and files, in forms that no recorded and no invented server has.
#include "tools/readings.h"

#include <gtest/gtest.h>

namespace {

using namespace readings;

#define DF_ROWS                                                                                    \
    "\nFilesystem  1024-blocks  Used  Avail Capacity\n/dev/a2 253678 242170 -8786 104% /\n"        \
    "/dev/a3.long-name\n\n   100 50 50 50% /x\n/dev/a4.eli 7 7 7 1% /\n/dev/a4 8 8 8 1% /\n"       \
    "/dev/a4.b 9 9 9 1% /\n/dev/a5 a b 20 5 15 25% /a b\n/dev/a6 1 2 "                             \
    "99999999999999999999\n/dev/a7"
#define MAP     "\nHdd count,3\nxS1,1\nS1x,2\nS1 ,3\nS\x01;3,4\nS5,a,7\n`id`$(x)'\"*\\%s,8\nS6"
#define RULE    "--------------------------------------------\n"
#define COLUMNS "EID:Slt DID State\n"
#define VOLUMES "IR Volume information\n"
#define DRIVES  "Physical device information\n"

TEST(Tools, Readings) {
    const struct {
        std::string (*read)(text_view text);
        const char *text, *told;
    } rows[] = {
        {smartctl,
         "smartctl 7.3\nDevice Model: test result: FAILED!\nSerial Number:  a;b:c \nSerial Number: "
         "2\nFirmware Version: 2.5+\nRotation Rate:    7200 rpm\n\n"
         "SMART overall-health self-assessment test result: PASSED\n\nSMART Attributes Data\n"
         "194 Temperature_Celsius 0 72 60 0 Old_age Always - 31 (Min/Max 9/44)\n"
         "194 Temperature_Celsius 1 2 3 4 5 6 7 8\n",
         "OK,abc,2.5+,7200 rpm,31|"},
        {smartctl, "SMART Health Status: OK\nCurrent Drive Temperature: 4 C\n", "OK,,,,|"},
        {devlist, "<x> at scbus9 (ada0) >  at scbus0 (pass0,ada0)\n<x> at scbus12 (ada1)\nses0\n",
         "0|at scbus0 pass0 ada0 12|at scbus12 ada1 |ses0 "},
        {df, "/dev/a2" DF_ROWS, "swap 259766272,247982080,-8996864|"},
        {df, "/dev/a3" DF_ROWS, "102400,51200,51200|"},
        {df, "/dev/a4" DF_ROWS, "swap 8192,8192,8192|"},
        {df, "/dev/a5 a b" DF_ROWS, "20480,5120,15360|"},
        {df, "/dev/a6" DF_ROWS, "swap "},
        {df, "/dev/a" DF_ROWS, ""},
        {lspci, "00:1d.0 USB: HCIx UHCI\n01:00.0 IDE [ATA]: x #y\n",
         "00 1d.0 USB  HCIx,01 00.0 IDE [ATA]  x #y|"},
        {driveMap, "S1" MAP, "3"},
        {driveMap, "1" MAP, "1"},
        {driveMap, "S3" MAP, "4"},
        {driveMap, "S5,a" MAP, "7"},
        {driveMap, "`id`$(x)'\"*\\%s" MAP, "8"},
        {driveMap, "S6" MAP, ""},
        {driveMap, "Hdd count" MAP, ""},

        {controllerCount, "Number of Controllers =\n", "-"},
        {controllerCount, "number of controllers = x\nNUMBER OF CONTROLLERS = 999\n", "999"},
        {controllerCount, "Number of Controllers = 1000\n", "0"},
        // Cells are found below their labels, and rows between the second rule and the third.
        {storcliDrives,
         RULE "EID:Slt DID State DG      Size Intf SeSz Sp\n" RULE
              "252:1    11 Onln   0 12.732 TB SAS  4 KB U \n252:1    12 twice\n"
              " :25      7 UGood  F      0 KB SATA 512B -\n",
         "252,1,in,11,Onln,12.732,|,25,,7,UGood,0,|"},
        {storcliDrives,
         RULE "  EID:Slt  Size  DID   State\n" RULE " 9:9   \tSSD  2 TB 5  On;l:n   x\n",
         "9,9,in,5,Onln,2,|"},
        {storcliDrives, RULE COLUMNS RULE "1:x       1\nx:2       2\n4         4\n5:5       x\n",
         "x,2,,2,,,|"},
        {storcliDrives, RULE COLUMNS "1:1       1\n" RULE "2:2       2\n" RULE "3:3       3\n",
         "2,2,in,2,,,|"},
        {storcliDrives, RULE COLUMNS RULE "1:1       1\nTitle :\n2:2       2\n", "1,1,in,1,,,|"},
        {storcliCard,
         "Controller = 0\nStatus = Success\nProduct Name =  A; B: c\nProduct Name = other\n"
         "Virtual Drives :\n" RULE "DG/VD TYPE\n" RULE "0/1   R1\n" RULE
         "FW Version =\nFW Version = 1\n",
         "A_B_c,,,|whole"},
        {storcliVolumes,
         "OS Drive Name = none\n/c0/v1 :\nOS Drive Name =\nOS Drive Name = /m:f;\nPDs for VD 12 "
         ":\n" RULE COLUMNS RULE "8:1       1\n8:1       1\n :3       1\nx\n",
         "1,/mf|12,|8,1,in,1,,,|,3,,1,,,|"},
        {storcliFacts,
         "SN = early\nDrive /c0/e252/s10 - Detailed Information :\nSN =   a  b;:c \nSN = later\n"
         "WWN = Drive /c0/e1/s1 :\nPort Information :\nFirmware Revision = F 1   \n"
         "Drive /c0/s3 State :\nModel Number =\nModel Number = late\n",
         "252,10,a__bc,Drive_/c0/e1/s1,F_1,|,3,,,,|"},
        {cards, "  raidCards = \"northwind  raid|x  y\";\r", "0 "},
        {cards, "# raidCards = \"a\"\nxraidCards=\"a\"\nraidCards=\"\";\nraidCards\t=  NORTH = b\n",
         "0 12 "},
        {cards, "raidCards = \"raid;\001$\";", "12 "},
        {cards, "raidCards = \"*4000*\"", "0 "},
        {cards, "raidCards = \"^ +[0-9]+ .*\\(x\\)\"", "12 "},
        {cards, "raidCards = \"(\"", ""},
        {cards, "raidCards = \"(.*)\\1\"", ""}, // without a bound in time or memory
        {cards, "raidCards = \"((.{0,255}){0,255}){0,255}\"", ""},
        {cards, "raidCards = \"r+++++++++++++++++++++++++++++++\"", ""},

        {sasList, " Index    Type          ID\n", "told"},
        {sasList, "0 SAS3008\n  12  SAS3008_1\n12 SAS3008\nx SAS3008\n3\n4 SAS2008\n", "told 0 12"},
        {sasDisplay,
         VOLUMES "IR volume 7\nVolume ID : 3 2;3\nStatus of volume : Inactive, Okay (OKY)\n"
                 "Size (in MB) : 2048\nPHY[0] Enclosure #/Slot# : 1 : 2\nEnclosure#/Slot# : 3\n"
                 "IR Volume 8\nVolume ID : 322\nSize (in MB) : 18446744073709551616\n",
         ",,,,|323,Inactive,Okay(OKY),,2048|1,2|3,|322,,,-|"},
        // A volume without a title of its own has no members that are known to be its own.
        {sasDisplay,
         VOLUMES "Volume ID : 1\nEnclosure#/Slot# : 1:1\nIR volume 2\nVolume ID : 2\n"
                 "PHY[0] Enclosure#/Slot# : 2:2\nVolume ID : 3\nPHY[0] Enclosure#/Slot# : 3:3\n",
         ",,,,|1,,,-|2,,,-|2,2|3,3|3,,,-|"},
        {sasDisplay,
         DRIVES "Device is a Hard disk\n  Enclosure # : 2\n  Slot # : 5\n  Serial No : S;:1\n"
                "  Serial No : 2\nDevice is a Enclosure services device\n  Slot # : 9\n"
                "Device is an odd one\n  Enclosure # : 4\nEnclosure information\n  Slot # : 1\n",
         ",,,,|2,5,,-,,,,S1,|"},
        // Without titles a device begins at its enclosure.
        {sasDisplay,
         DRIVES "Enclosure # : 1\nSlot# : 1\nEnclosure # : 1\nSlot # : 2\nState : Standby\n",
         ",,,,|1,1,,-,,,,,|1,2,Standby,-,,,,,|"},

        // Of two providers the first counts.
        {graid,
         "Geom name: A\nState: DEGRADED\nProviders:\n1. Name: raid/r;0\n   State: OPTIMAL\n"
         "   RAIDLevel: RAID1 E\n   Label: Name State\n2. Name: raid/r1\n   State: BROKEN\n"
         "Consumers:\n1. Name: ada0\n2. Name: /dev/ada1\n3. Name: ada0\n4. Name:\n",
         "raid/r0,OPTIMAL,,1E|ada0 ada1 ada0 "},
        // A geom without providers is named after its first disk.
        {graid, "Geom name: A\nConsumers:\n1. Name: ada6\n   State: a\n   State: b\n",
         "ada6,b,,|ada6 "},
        {graid,
         "geom NAME: A\nProviders:\n1. Name: raid/r0\n2. Name: ada1\n10. Name: ada2\n. Name: x\n"
         "Geom name: A\n1. Name: ada3\nGeom name: B\n",
         "raid/r0,,,|ada1 ada2 ,,,|"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.read(row.text), row.told) << row.text;
}

} // namespace
