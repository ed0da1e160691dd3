// What storcli, sas3ircu and graid print, in forms that no recorded server has.
#include "storage/raid_card.h"
#include "tools/graid.h"
#include "tools/sas3ircu.h"

#include <gtest/gtest.h>

namespace {

const std::string RULE = "--------------------------------------------\n";
const std::string COLUMNS = "EID:Slt DID State\n";

std::string shown(const std::vector<storcli_drive>& drives) {
    std::string all;
    for (const storcli_drive& drive : drives)
        all += drive.place() + (drive.in_enclosure ? " in " : " ") + drive.device_id + " " +
               drive.state + " " + drive.size + "|";
    return all;
}

TEST(Storcli, ControllersAreCounted) {
    const std::pair<const char*, int> rows[] = {
        {"Number of Controllers =\n", -1}, // not told
        {"number of controllers = x\nNUMBER OF CONTROLLERS = 12\n", 12},
        {"Number of Controllers = 999\nNumber of Controllers = 2\n", 999},
        {"Number of Controllers = 1000\n", 0},
        {"Number of Controllers = 18446744073709551616\n", -1},
    };
    for (const auto& [text, count] : rows) {
        const storcli_listing listing = parseStorcliShow(text);
        EXPECT_EQ(listing.told ? listing.count : -1, count) << text;
    }
}

// Cells are found below their labels, and rows between the second rule and the third.
TEST(Storcli, TablesShift) {
    const struct {
        std::string text;
        const char* drives;
    } rows[] = {
        {RULE + "EID:Slt DID State DG      Size Intf SeSz Sp\n" + RULE +
             "252:1    11 Onln   0 12.732 TB SAS  4 KB U \n252:1    12 twice\n"
             " :25      7 UGood  F      0 KB SATA 512B -\n",
         "252:1 in 11 Onln 12.732|:25 7 UGood 0|"},
        {RULE + "  EID:Slt  Size  DID   State\n" + RULE + " 9:9   \tSSD  2 TB 5  On;l:n   x\n",
         "9:9 in 5 Onln 2|"},
        {RULE + COLUMNS + RULE + "1:x       1\nx:2       2\n4         4\n5:5       x\n",
         "x:2 2  |"},
        {RULE + COLUMNS + "1:1       1\n" + RULE + "2:2       2\n" + RULE + "3:3       3\n",
         "2:2 in 2  |"},
        {RULE + COLUMNS + RULE + "1:1       1\nTitle :\n2:2       2\n", "1:1 in 1  |"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(shown(parseStorcliDrives(row.text)), row.drives) << row.text;
}

TEST(Storcli, CardsTellOfThemselves) {
    const storcli_card card = parseStorcliCard(
        "Controller = 0\nStatus = Success\nProduct Name =  A; B: c\nProduct Name = other\n"
        "Virtual Drives :\n" +
        RULE + "DG/VD TYPE\n" + RULE + "0/1   R1\n" + RULE + "FW Version =\nFW Version = 1\n");
    EXPECT_TRUE(card.whole && card.named && card.volumes.empty());
    EXPECT_EQ(card.product + "|" + card.firmware, "A_B_c|");
    for (const char* text : {"Product Name = x\n", "Controller = 0\nStatus = Failure\n"})
        EXPECT_FALSE(parseStorcliCard(text).whole) << text;

    auto volumes =
        parseStorcliVolumes("OS Drive Name = none\n/c0/v1 :\nOS Drive Name =\nOS Drive Name = "
                            "/m:f;\nPDs for VD 12 :\n" +
                            RULE + COLUMNS + RULE + "8:1       1\n8:1       1\n :3       1\nx\n");
    EXPECT_EQ(volumes["1"].os_name + shown(volumes["1"].members), "/mf");
    EXPECT_EQ(volumes["12"].os_name + shown(volumes["12"].members), "8:1 in 1  |:3 1  |");

    auto drives = parseStorcliDriveFacts(
        "SN = early\nDrive /c0/e252/s10 - Detailed Information :\nSN =   a  b;:c \nSN = later\n"
        "WWN = Drive /c0/e1/s1 :\nPort Information :\nFirmware Revision = F 1   \n"
        "Drive /c0/s3 State :\nModel Number =\nModel Number = late\n");
    EXPECT_EQ(drives.size(), 2U);
    const storcli_drive_facts& facts = drives["252:10"];
    EXPECT_EQ(facts.serial + "|" + facts.wwn + "|" + facts.firmware, "a__bc|Drive_/c0/e1/s1|F_1");
    EXPECT_EQ(drives[":3"].model, "");
}

TEST(RaidCards, AreSelectedByTheirPattern) {
    const storcli_listing listing = parseStorcliShow(
        "  0 Northwind RAID 4000   8\n 12 northwind (x)\nraid 5\n 12 again RAID\n");
    const struct {
        const char* line;
        const char* cards;
    } rows[] = {
        {"  raidCards = \"northwind  raid|x  y\";\r", "0 "},
        {"# raidCards = \"a\"\nxraidCards=\"a\"\nraidCards=\"\";\nraidCards\t=  NORTH = b\n",
         "0 12 "},
        {"raidCards = \"raid;\001$\";", "12 "},
        {"raidCards = \"*4000*\"", "0 "},
        {"raidCards = \"^ +[0-9]+ .*\\(x\\)\"", "12 "},
        {"raidCards = \"0{3}\"", "0 "},
        {"raidCards = \"(\"", ""},
        {"raidCards = \"\"", ""},
        // Without a bound in time or memory
        {"raidCards = \"(.*)\\1\"", ""},
        {"raidCards = \"((.{0,255}){0,255}){0,255}\"", ""},
        {"raidCards = \"r+++++++++++++++++++++++++++++++\"", ""},
    };
    for (const auto& row : rows) {
        std::string cards;
        for (const std::string& card : selectCards(listing, parseCardPattern(row.line)))
            cards += card + " ";
        EXPECT_EQ(cards, row.cards) << row.line;
    }
}

TEST(Sas3ircu, ControllersAreListed) {
    EXPECT_FALSE(parseSas3ircuList("SAS3IRCU: MPTLib2 Error 1\n").told);
    EXPECT_TRUE(parseSas3ircuList(" Index    Type          ID\n").told);
    const sas3ircu_listing listing =
        parseSas3ircuList("0 SAS3008\n  12  SAS3008_1\n12 SAS3008\nx SAS3008\n3\n4 SAS2008\n");
    EXPECT_TRUE(listing.told);
    EXPECT_EQ(listing.sas3008, (std::vector<std::string>{"0", "12"}));
}

std::string shown(const sas_display& display) {
    std::string all;
    for (const sas_volume& volume : display.volumes) {
        all += volume.id + " " + volume.status + " " + std::to_string(volume.size.value_or(0));
        for (const sas_place& place : volume.members)
            all += " " + place.enclosure + ":" + place.slot;
        all += "|";
    }
    for (const sas_drive& drive : display.drives)
        all += drive.place.enclosure + ":" + drive.place.slot + " " + drive.state + " " +
               drive.serial + "|";
    return all + (display.whole ? "whole" : "");
}

TEST(Sas3ircu, DisplaysTellOfVolumesAndDrives) {
    const std::string controller = "Controller information\n RAID Support : Yes\n";
    const std::string volumes = "IR Volume information\n", drives = "Physical device information\n";
    const std::string end = "Enclosure information\n";
    const struct {
        std::string text;
        const char* told;
    } rows[] = {
        {controller + volumes + drives + end, "whole"},
        {controller + drives, ""},
        {controller + end, ""},
        {drives + end, ""},
        {"Volume ID : 1\nSlot # : 1\n", ""},
        {volumes + "IR volume 7\nVolume ID : 3 2;3\nStatus of volume : Inactive, Okay (OKY)\n"
                   "Size (in MB) : 2048\nPHY[0] Enclosure #/Slot# : 1 : 2\nEnclosure#/Slot# : 3\n"
                   "IR Volume 8\nVolume ID : 322\nSize (in MB) : 18446744073709551616\n",
         "323 Inactive,Okay(OKY) 2048 1:2 3:|322  0|"},
        // A volume without a title of its own has no members that are known to be its own.
        {volumes + "Volume ID : 1\nEnclosure#/Slot# : 1:1\nIR volume 2\nVolume ID : 2\n"
                   "PHY[0] Enclosure#/Slot# : 2:2\nVolume ID : 3\nPHY[0] Enclosure#/Slot# : 3:3\n",
         "1  0|2  0 2:2 3:3|3  0|"},
        {drives +
             "Device is a Hard disk\n  Enclosure # : 2\n  Slot # : 5\n  Serial No : S;:1\n"
             "  Serial No : 2\nDevice is a Enclosure services device\n  Slot # : 9\n"
             "Device is an odd one\n  Enclosure # : 4\n" +
             end + "  Slot # : 1\n",
         "2:5  S1|"},
        // Without titles a device begins at its enclosure.
        {drives + "Enclosure # : 1\nSlot# : 1\nEnclosure # : 1\nSlot # : 2\nState : Standby\n",
         "1:1  |1:2 Standby |"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(shown(parseSas3ircuDisplay(row.text)), row.told) << row.text;
}

TEST(Graid, VolumesAreListed) {
    const struct {
        const char* text;
        const char* told;
    } rows[] = {
        {"Geom name:\nState: x\nProviders:\n1. Name: raid/r0\n", ""},
        // Of two providers the first counts.
        {"Geom name: A\nState: DEGRADED\nProviders:\n1. Name: raid/r;0\n   State: OPTIMAL\n"
         "   RAIDLevel: RAID1 E\n   Label: Name State\n2. Name: raid/r1\n   State: BROKEN\n"
         "Consumers:\n1. Name: ada0\n2. Name: /dev/ada1\n3. Name: ada0\n4. Name:\n",
         "raid/r0 OPTIMAL 1E ada0 ada1 ada0|"},
        // A geom without providers is named after its first disk.
        {"Geom name: A\nConsumers:\n1. Name: ada6\n   State: a\n   State: b\n", "ada6 b  ada6|"},
        {"geom NAME: A\nProviders:\n1. Name: raid/r0\n2. Name: ada1\n10. Name: ada2\n. Name: x\n"
         "Geom name: A\n1. Name: ada3\nGeom name: B\n",
         "raid/r0   ada1 ada2|  |"},
    };
    for (const auto& row : rows) {
        std::string told;
        for (const graid_volume& volume : parseGraidList(row.text)) {
            told += volume.name + " " + volume.state + " " + volume.level;
            for (const std::string& member : volume.members)
                told += " " + member;
            told += "|";
        }
        EXPECT_EQ(told, row.told) << row.text;
    }
}

} // namespace
