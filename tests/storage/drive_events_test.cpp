// Drive events of records that no tool's output brings about.
#include "storage/drive_events.h"

#include "bmc_test.h"
#include "storage/drive_family.h"
#include "text.h"

#include <cstdio>

namespace {

std::string hd(const std::string& state, const std::string& index = "3") {
    return "HD;/dev/ada0:" + state + ":S1:F1;" + index + ";SSD;N/A;c;m;9;9;9;9;9;IDE;30;";
}
std::string it(const std::string& state, const std::string& place = "C1E2S7") {
    return "BRCM_IT_PD;0;N/A:OK:" + state + ":S1:F1;" + place + ";HDD;N/A;m;2.00;";
}
std::string raid(const std::string& state, const std::string& place = "C1E252S3") {
    return "BRCM_IR_PD;0;w:OK:" + state + ":S1:F1;" + place + ";HDD;N/A;m;2.00;";
}

class DriveEvents : public BmcTest {
  protected:
    // The first pass after a start.
    std::string firstPass(const Lines& records) {
        for (drive_family& family : drive_families) {
            freeNodes(*family.head, *family.prev);
            family.listed_once = false;
        }
        static_first_init = 1;
        return pass(records);
    }
    // A pass over these records. Returns the events that arrived, each "sensor alert type event2
    // event3".
    std::string pass(const Lines& records) {
        resetDrivePresenceCheck();
        for (const std::string& record : records) {
            list item{};
            copyText(item.parm, record);
            trackDrive(item, true);
        }
        checkDrivePresence(storage_items());
        static_first_init = 0;
        std::string all;
        for (const Bytes& record : bmc->sent(0x04, 0x02)) {
            EXPECT_EQ(Bytes(record.begin(), record.begin() + 3), (Bytes{0x41, 0x04, 0x0D}));
            char text[32];
            std::snprintf(text, sizeof text, "%s%02X %02X %02X %02X %02X", all.empty() ? "" : ", ",
                          record[3], record[4], record[5], record[6], record[7]);
            all += text;
        }
        bmc->forget();
        return all;
    }
};

TEST_F(DriveEvents, OfStates) {
    const struct {
        std::string first, second; // records of one drive
        const char *at_first, *then;
    } rows[] = {
        {hd("FAILED"), hd("OK"), "FF 70 A6 03 FF", "FF F0 A6 03 FF"},
        {hd("REBUILD 1%"), hd("REBUILD 2%"), "FF 70 A7 03 FF", "FF 70 A7 03 FF, FF F0 A7 03 FF"},
        {hd("xRESYNC"), hd("Failing"), "FF 70 A7 03 FF", "FF F0 A7 03 FF"},
        {hd("a PredictiveFailureAnalysis"), hd("OK"), "FF 70 A2 03 FF", "FF F0 A2 03 FF"},
        {it("Failed (x)"), it("HotSpares"), "", "5F F0 A1 07 42"},
        {it("OutofSync."), it("Rebuilding 5%"), "", "5F F0 A5 07 42"},
        {it("Rebuilding 5%"), it("xDegraded"), "", "5F F0 A7 07 42"},
        {it("HotSpares"), it("Ready"), "", "5F F0 A3 07 42"},
        {raid("xOutofSync"), raid("xRbld"), "", "FF F0 A5 13 FF"},
        {raid("xDHS"), raid("UBad?"), "", ""},
        // Longer than what is remembered of a state, which must not seem to change for ever.
        {hd(std::string(45, '-') + "REBUILD"), hd(std::string(45, '-') + "REBUILD"), "", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(firstPass({row.first}), row.at_first) << row.first;
        EXPECT_EQ(pass({row.second}), row.then) << row.first;
    }
}

TEST_F(DriveEvents, OfOddRecords) {
    // Missing onboard drives without a number take the byte of the one before, zero at first.
    Lines records;
    for (const char* index : {"N/A", "300", "x"})
        records.push_back("HD;/dev/ada" + std::string(index) + ":OK:S:F;" + index + ";");
    firstPass(records);
    EXPECT_EQ(pass({}), "FF 70 A0 00 FF, FF 70 A0 2C FF, FF 70 A0 2C FF");

    const struct {
        Lines records;
        const char* expected;
    } rows[] = {
        {{"", "HDX;/dev/ada0:Fail:S:F;3;"}, ""},
        {{"HD;/dev/ada1:Fail"}, "FF 70 A1 00 FF"},
        {{"HD;/dev/ada2:Fail:S:F;99999999999;" + std::string(40, ';')}, "FF 70 A1 FF FF"},
        {{it("Degraded", "C5E70S260"), it("Missing", "C1E2S3")}, "5F 70 A2 04 46"},
        {{it("Degraded", "C1ES7")}, "5F 70 A2 00 40"},
        {{raid("Degraded", "N/A")}, "FF 70 A2 00 FF"},
        {{raid("UBad"), raid("Onln")}, "FF 70 A1 13 FF"}, // two records of a place make one state
    };
    for (const auto& row : rows) {
        EXPECT_EQ(firstPass(row.records), row.expected) << row.records[0];
        EXPECT_EQ(pass(row.records), "") << "again: " << row.records[0];
    }
}

} // namespace
