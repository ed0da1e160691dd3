#include "tools/storcli.h"

#include "storage/raid_card.h"

#include <gtest/gtest.h>

namespace {

const std::string COLUMNS = "EID:Slt DID State";
const std::string RULE = "--------------------------------------------\n";

std::string table(const std::string& header, const std::string& rows) {
    return RULE + header + "\n" + RULE + rows + RULE;
}

std::string shown(const std::vector<storcli_drive>& drives) {
    std::string all;
    for (const storcli_drive& drive : drives)
        all += drive.place() + (drive.in_enclosure ? " in " : " ") + drive.device_id + " " +
               drive.state + " " + drive.size + " " + drive.medium + "|";
    return all;
}

TEST(Storcli, ControllersAreCountedAndListed) {
    const struct {
        const char* text;
        bool told;
        int count;
    } rows[] = {
        {"", false, 0},
        {"Number of Controllers =\n", false, 0},
        {"Status = Failure\nnumber of controllers = x\nNUMBER OF CONTROLLERS = 12\n", true, 12},
        {"Number of Controllers = 999\nNumber of Controllers = 2\n", true, 999},
        {"Number of Controllers = 1000\n", true, 0},
        {"Number of Controllers = 18446744073709551616\n", false, 0},
    };
    for (const auto& row : rows) {
        const storcli_listing listing = parseStorcliShow(row.text);
        EXPECT_EQ(listing.told, row.told) << row.text;
        EXPECT_EQ(listing.count, row.count) << row.text;
    }
}

// Cells are found below their labels, wherever these stand.
TEST(Storcli, TablesShift) {
    const struct {
        std::string text;
        const char* drives;
    } rows[] = {
        {table("EID:Slt DID State DG      Size Intf Med SED PI SeSz Model            Sp Type",
               "252:1    11 Onln   0 12.732 TB SAS  HDD N   N  4 KB M  - - 1         U  -\n"
               "252:1    12 UBad   0 12.732 TB SAS  HDD N   N  512B the same place   U  -\n"
               " :25      7 UGood  F      0 KB SATA SSD -   N  512B M                -  - \n"
               "8:12    188 Offln  -  1.090 TB SAS  HDD N   N  512B M                U  -\n"),
         "252:1 in 11 Onln 12.732 HDD|:25 7 UGood 0 SSD|8:12 in 188 Offln 1.090 HDD|"},
        {table("  EID:Slt  Med   DID   State", " 9:9   \tSSD  HDD 5  On;l:n   x\n"),
         "9:9 in 5 Onln  HDD|"},
        {table("EID:Slt                  DID", "1:x                      1\n"
                                               "x:2                      2\n"
                                               "4                        4\n"
                                               "5:5                      x\n"
                                               "6:6   99999999999999999999\n"),
         "x:2 2   |"},
        // Rows stand between the second rule and the third, or the next title.
        {table(COLUMNS, "1:1     1   a\n") + "2:2     2   b\n" + RULE + "3:3     3   c\n",
         "1:1 in 1 a  |"},
        {RULE + COLUMNS + "\n1:1     1   a\n" + RULE + "2:2     2   b\nTitle :\n3:3     3   c\n",
         "2:2 in 2 b  |"},
        {table("DG Arr Row EID:Slot DID State", "0  0   0   252:9    99  a\n"), ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(shown(parseStorcliDrives(row.text)), row.drives) << row.text;
}

TEST(Storcli, CardsTellOfThemselves) {
    const std::string volumes =
        table("DG/VD TYPE   State Access     Size Name", "0/238 RAID10 OfLn  RW     2.181 TB a b\n"
                                                         "-     RAID1  Optl  RW     1     TB\n");
    const std::string drives = table("EID:Slt DID State Size Med",
                                     "8:1     x   Onln  1 TB HDD\n :2     2   Onln  1 TB HDD\n");
    const storcli_card card =
        parseStorcliCard("Controller = 0\nStatus = Success\nProduct Name =  A; B: c\nProduct Name "
                         "= other\nVD LIST :\n" +
                         volumes + "JBOD LIST :\n" + drives + "PD LIST :\n=====\n" + drives +
                         "Virtual Drives :\n" + volumes + "Serial Number =\nFW Version = 1\n");
    EXPECT_TRUE(card.whole && card.named);
    EXPECT_EQ(card.product + "|" + card.bios + "|" + card.firmware, "A_B_c||1");
    ASSERT_EQ(card.volumes.size(), 1U);
    EXPECT_EQ(card.volumes[0].number + card.volumes[0].level + card.volumes[0].state +
                  card.volumes[0].size,
              "238RAID10OfLn2.181");
    EXPECT_EQ(shown(card.drives), "8:1 in x Onln 1 HDD|");
    for (const char* text :
         {"", "Product Name = x\n", "Controller = 0\nStatus = Failure\nDescription = not found\n"})
        EXPECT_FALSE(parseStorcliCard(text).whole) << text;
}

TEST(Storcli, VolumesAndDrivesAreToldApart) {
    auto volumes = parseStorcliVolumes(
        "OS Drive Name = none\n/c0/v1 :\n\nPDs for VD 1 :\n" +
        table(COLUMNS, "8:1     1   x\n8:2     2   x\n") +
        "VD1 Properties :\nOS Drive Name =\nOS Drive Name = /dev/m:f;id0 \nOS Drive Name = b\n" +
        "PDs for VD 12 :\n" + table(COLUMNS, "8:1     1   x\n8:1     1   x\n :3     1   x\nx\n") +
        "Other :\nOS Drive Name = N/A\n" + table(COLUMNS, "9:9     1   x\n"));
    EXPECT_EQ(volumes.size(), 2U);
    EXPECT_EQ(volumes["1"].os_name + " " + shown(volumes["1"].members),
              "/dev/mfid0 8:1 in 1 x  |8:2 in 2 x  |");
    EXPECT_EQ(volumes["12"].os_name + " " + shown(volumes["12"].members),
              "N/A 8:1 in 1 x  |:3 1 x  |");

    auto drives = parseStorcliDriveFacts(
        "SN = early\nDrive /c0/e252/s10 - Detailed Information :\nSN =   a  b;:c \nSN = later\n"
        "WWN = Drive /c0/e1/s1 :\nPort Information :\nFirmware Revision = F 1   \n"
        "Drive /c0/s3 State :\nModel Number =\nModel Number = late\nFirmware Release Number = 2\n");
    EXPECT_EQ(drives.size(), 2U);
    EXPECT_EQ(drives["252:10"].serial + "|" + drives["252:10"].wwn + "|" +
                  drives["252:10"].firmware,
              "a__bc|Drive_/c0/e1/s1|F_1");
    EXPECT_EQ(drives[":3"].model + drives[":3"].firmware, "");
}

TEST(RaidCardPattern, IsReadAndMatched) {
    const storcli_listing listing = parseStorcliShow("  0 Northwind RAID 4000   8\n"
                                                     " 12 northwind (x)\n"
                                                     "raid 5\n"
                                                     " 12 again RAID\n");
    const struct {
        const char* line;
        const char* pattern;
        const char* cards;
    } rows[] = {
        {"  raidCards = \"northwind raid|x  y\";\r", "northwind raid|x y", "0 "},
        {"# raidCards = \"a\"\nraidCards=\"\";\nraidCards\t=  NORTH = b\n", "NORTH", "0 12 "},
        {"xraidCards = \"a\"", "", ""},
        {"raidCards = \"raid;\001$\";", "raid$", "12 "},
        {"raidCards = \"*4000*\"", "*4000*", "0 "},
        {"raidCards = \"^ +[0-9]+ .*\\(x\\)\"", "^ +[0-9]+ .*\\(x\\)", "12 "},
        {"raidCards = \"(\"", "(", ""},
        {"raidCards = \"0{3}\"", "0{3}", "0 "},
        // Without a bound in time or memory
        {"raidCards = \"(.*)\\1\"", "(.*)\\1", ""},
        {"raidCards = \"((.{0,255}){0,255}){0,255}\"", "((.{0,255}){0,255}){0,255}", ""},
        {"raidCards = \"r+++++++++++++++++++++++++++++++\"", "r+++++++++++++++++++++++++++++++",
         ""},
    };
    for (const auto& row : rows) {
        const std::string pattern = parseCardPattern(row.line);
        EXPECT_EQ(pattern, row.pattern) << row.line;
        std::string cards;
        for (const std::string& card : selectCards(listing, pattern))
            cards += card + " ";
        EXPECT_EQ(cards, row.cards) << row.line;
    }
}

} // namespace
