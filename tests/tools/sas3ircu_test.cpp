#include "tools/sas3ircu.h"

#include <gtest/gtest.h>

namespace {

TEST(Sas3ircu, ControllersAreListed) {
    const struct {
        const char* text;
        bool told;
        std::vector<std::string> numbers;
    } rows[] = {
        {"", false, {}},
        {"SAS3IRCU: MPTLib2 Error 1\n", false, {}},
        {" Index    Type          ID\n   0     SAS2008  1000h\n", true, {}},
        {"0 SAS3008 1000h\n  12  SAS3008_1\n12 SAS3008\nx SAS3008\n3\n", true, {"0", "12"}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(parseSas3ircuList(row.text).told, row.told) << row.text;
        EXPECT_EQ(parseSas3ircuList(row.text).sas3008, row.numbers) << row.text;
    }
}

std::string shown(const sas_display& display) {
    const auto size = [](const std::optional<std::uint64_t>& mb) {
        return mb.has_value() ? std::to_string(*mb) : "-";
    };
    std::string all;
    for (const sas_volume& volume : display.volumes) {
        all += volume.id + " " + volume.status + " " + volume.level + " " + size(volume.size);
        for (const sas_place& place : volume.members)
            all += " " + place.enclosure + ":" + place.slot;
        all += "|";
    }
    for (const sas_drive& drive : display.drives)
        all += drive.place.enclosure + ":" + drive.place.slot + " " + drive.state + " " +
               size(drive.size) + " " + drive.manufacturer + " " + drive.model + " " +
               drive.serial + " " + drive.type + "|";
    return all;
}

const std::string CONTROLLER = "Controller information\n RAID Support : Yes\n";
const std::string VOLUMES = "IR Volume information\n";
const std::string DRIVES = "Physical device information\n";
const std::string END = "Enclosure information\n";

TEST(Sas3ircu, DisplaysTellOfVolumesAndDrives) {
    const struct {
        std::string text;
        const char* told;
    } rows[] = {
        {"Volume ID : 1\nSlot # : 1\n", ""},
        {VOLUMES + "IR volume 7\nVolume ID : 3 2;3\nStatus of volume : Inactive, Okay (OKY)\n"
                   "RAID level : RAID 1E\nSize (in MB) : 2048\nPHY[0] Enclosure #/Slot# : 1 : 2\n"
                   "PHY[1] Enclosure#/Slot# : 3\nIR Volume 8\nVolume ID : 322\n"
                   "Size (in MB) : 18446744073709551616\nEnclosure#/Slot# : 0:0\n",
         "323 Inactive,Okay(OKY) RAID1E 2048 1:2 3:|322   - 0:0|"},
        // A volume without a title of its own has no members that are known to be its own.
        {VOLUMES + "Volume ID : 1\nEnclosure#/Slot# : 1:1\nIR volume 2\nVolume ID : 2\n"
                   "PHY[0] Enclosure#/Slot# : 2:2\nVolume ID : 3\nPHY[0] Enclosure#/Slot# : 3:3\n",
         "1   -|2   - 2:2 3:3|3   -|"},
        {DRIVES +
             "Device is a Hard disk\n  Enclosure # : 2\n  Slot # : 5\n  State : Ready (RDY)\n"
             "  Size (in MB)/(in sectors) : 953869/1953523711\n  Manufacturer : ATA     \n"
             "  Model Number : M 1 \n  Serial No : S;:1\n  Serial No : 2\n"
             "  Drive Type : SATA_HDD\nDevice is a Enclosure services device\n  Slot # : 9\n"
             "Device is a Hard disk\n  Enclosure # : 0\n  Slot# : 0\n  State : Missing (MIS)\n"
             "  Model Number :\nDevice is an odd one\n  Enclosure # : 4\n" +
             END + "  Slot # : 1\n",
         "2:5 Ready(RDY) 953869 ATA M1 S1 SATA_HDD|0:0 Missing(MIS) -    |"},
        // Without titles a device begins at its enclosure.
        {DRIVES + "Enclosure # : 1\nSlot # : 1\nEnclosure # : 1\nSlot # : 2\nState : Standby\n",
         "1:1  -    |1:2 Standby -    |"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(shown(parseSas3ircuDisplay(row.text)), row.told) << row.text;
}

TEST(Sas3ircu, DisplaysAreWholeOrNot) {
    EXPECT_TRUE(parseSas3ircuDisplay(CONTROLLER + VOLUMES + DRIVES + END).whole);
    for (const std::string& text :
         {std::string(), CONTROLLER + VOLUMES + DRIVES, CONTROLLER + END, VOLUMES + DRIVES + END})
        EXPECT_FALSE(parseSas3ircuDisplay(text).whole) << text;
}

} // namespace
