// Drive events of records that no tool's output brings about.
#include "storage/drive_events.h"

#include "bmc_test.h"
#include "simulator/core.h"
#include "storage/drive_family.h"
#include "text.h"

namespace {

std::string hd(const std::string& state, const std::string& index = "3") {
    return "HD;/dev/ada" + index + ":" + state + ":S1:F1;" + index + ";";
}
std::string it(const std::string& state, const std::string& place = "C1E2S7") {
    return "BRCM_IT_PD;0;N/A:OK:" + state + ":S1:F1;" + place + ";";
}
std::string raid(const std::string& state, const std::string& place = "C1E252S3") {
    return "BRCM_IR_PD;0;w:OK:" + state + ":S1:F1;" + place + ";";
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
            const std::string text = bmcsim::hexText(record);
            EXPECT_EQ(text.substr(0, 9), "41 04 0D ");
            all += (all.empty() ? "" : ", ") + text.substr(9);
        }
        bmc->forget();
        return all;
    }
};

TEST_F(DriveEvents, OfStatesAndPlaces) {
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
        // Longer than what is remembered of a state, which must not seem to change for ever.
        {hd(std::string(45, '-') + "REBUILD"), hd(std::string(45, '-') + "REBUILD"), "", ""},
        {"HD;/dev/ada1:Fail", "", "FF 70 A1 00 FF", "FF 70 A0 00 FF"},
        {hd("Fail", "99999999999") + std::string(40, ';'), hd("OK", "99999999999"),
         "FF 70 A1 FF FF", "FF F0 A1 FF FF"},
        {it("Degraded", "C5E70S260"), "", "5F 70 A2 04 46", "5F 70 A0 04 46"},
        {it("Degraded", "C1ES7"), "HDX;/dev/ada0:Fail:S:F;3;", "5F 70 A2 00 40", "5F 70 A0 00 40"},
        {raid("Degraded", "N/A"), raid("Onln", "N/A"), "FF 70 A2 00 FF", "FF F0 A2 00 FF"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(firstPass({row.first}), row.at_first) << row.first;
        EXPECT_EQ(pass({row.second}), row.then) << row.first;
    }
    // Missing onboard drives without a number take the byte of the one before, zero at first.
    firstPass({hd("OK", "N/A"), hd("OK", "300"), hd("OK", "x")});
    EXPECT_EQ(pass({}), "FF 70 A0 00 FF, FF 70 A0 2C FF, FF 70 A0 2C FF");
    // A drive under another name is where it was, or it isn't.
    firstPass({hd("OK")});
    EXPECT_EQ(pass({"HD;/dev/ada4:OK:S1:F1;3;"}), "FF F0 A0 03 FF");
    EXPECT_EQ(pass({hd("OK", "5")}), "FF F0 A0 05 FF, FF 70 A0 03 FF");
    // Of two records of a place the first counts.
    EXPECT_EQ(firstPass({raid("UBad"), raid("Onln")}), "FF 70 A1 13 FF");
}

TEST_F(DriveEvents, OnlyWhatWasRefusedIsToldAgain) {
    firstPass({hd("FAILED")});
    bmc->queue(0x04, 0x02, {Bytes{0}, Bytes{0x81}, Bytes{0x81}});
    EXPECT_EQ(pass({hd("Fail")}), "FF 70 A1 03 FF, FF F0 A6 03 FF");
    EXPECT_EQ(pass({hd("OK")}), "FF F0 A6 03 FF");
    EXPECT_EQ(pass({hd("OK")}), "FF F0 A6 03 FF, FF F0 A1 03 FF");
    EXPECT_EQ(pass({hd("OK")}), "");
    // A state that raises nothing and was over before the BMC heard of it is no news.
    firstPass({hd("Fail")});
    bmc->queue(0x04, 0x02, {Bytes{0x81}, Bytes{0x81}, Bytes{0x81}});
    EXPECT_EQ(pass({hd("OK")}), "FF F0 A1 03 FF");
    EXPECT_EQ(pass({hd("Fail")}), "");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(pass({}), "FF 70 A0 03 FF");
    const Lines log = datedLog("com");
    EXPECT_EQ(std::count(log.begin(), log.end(), "checkDrivePresence  HDD missing"), 1);
}

} // namespace
