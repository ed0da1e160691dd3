// Drive events: what no tool's output brings about, and what the BMC does not take at once.
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
    void SetUp() override {
        BmcTest::SetUp();
        forgetDrives();
    }
    static void forgetDrives() {
        for (drive_family& family : drive_families) {
            freeNodes(*family.head, *family.prev);
            family.listed_once = false;
        }
        static_first_init = 1;
    }
    // A pass over these records. Returns the events that arrived, each "sensor alert type event2
    // event3".
    std::string pass(const Lines& records, bool state_known = true) {
        resetDrivePresenceCheck();
        for (const std::string& record : records) {
            list item{};
            copyText(item.parm, record);
            trackDrive(item, state_known);
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

// One state after the other, each with the alerts and event types that it brings. "gone": no
// record. "?": the state is not known. Behind "!" what becomes of each event: 0 is refused.
TEST_F(DriveEvents, Lives) {
    const struct {
        std::string (*record)(const std::string&, const std::string&);
        std::string place, sensor, bytes, states;
    } rows[] = {
        {hd, "3", "FF ", " 03 FF",
         "FAILED>70 A6|OK>F0 A6|REBUILD 1%>70 A7|REBUILD 2%>70 A7>F0 A7|xRESYNC>70 A7>F0 A7|"
         "Fail>70 A1>F0 A7|FAILED>70 A6|a PredictiveFailureAnalysis>70 A2>F0 A6|Failing>F0 A2"},
        {it, "C1E2S7", "5F ", " 07 42",
         "xDegraded|xFailed|HotSpares>F0 A1|OutofSync.>F0 A3|Rebuilding 5%>F0 A5|Rbld>F0 A7"},
        {raid, "C1E252S3", "FF ", " 13 FF", "xOutofSync|xRbld>F0 A5|xDHS|UBad?"},
        // A family's first drive in a later pass: known from the start, or new.
        {hd, "3", "FF ", " 03 FF", "gone|Fail>70 A1"},
        {it, "C1E2S7", "5F ", " 07 42", "gone|Failed>F0 A0>70 A1"},
        // What was refused is told once more, and only that.
        {hd, "3", "FF ", " 03 FF",
         "OK|Fail!0>70 A1|Fail!0>70 A1|Fail>70 A1|Fail|OK!0>F0 A1|OK>F0 A1"},
        {hd, "3", "FF ", " 03 FF", "Fail!0>70 A1|OK|Fail!0>70 A1|FAILED>70 A6|OK>F0 A6"},
        {hd, "3", "FF ", " 03 FF", "FAILED>70 A6|Fail!10>70 A1>F0 A6|Fail!0>F0 A6|Fail>F0 A6|Fail"},
        {hd, "3", "FF ", " 03 FF",
         "FAILED>70 A6|Fail!10>70 A1>F0 A6|OK!10>F0 A6>F0 A1|OK>F0 A1|OK"},
        {hd, "3", "FF ", " 03 FF",
         "OK|gone!0>70 A0|gone>70 A0|gone|Fail!0>F0 A0|Fail!10>F0 A0>70 A1|Fail>70 A1|Fail"},
        {hd, "3", "FF ", " 03 FF", "OK|gone!0>70 A0|OK|gone>70 A0|gone"},
        {it, "C1E2S7", "5F ", " 07 42",
         "gone|Failed!0>F0 A0|gone|Ready!0>F0 A0|Ready>F0 A0|gone>70 A0"},
        // Not knowing is no news. A record in state Missing is none of the drive.
        {hd, "3", "FF ", " 03 FF", "Fail>70 A1|?N/A|Fail|?N/A|OK>F0 A1|?N/A|gone>70 A0|?N/A>F0 A0"},
        {it, "C1E2S7", "5F ", " 07 42",
         "Missing|Failed>F0 A0>70 A1|Missing>70 A0|Missing|Failed>F0 A0"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.states);
        forgetDrives();
        for (const std::string& step : splitFields(row.states, "|", 99)) {
            Lines words = splitFields(step, ">", 9);
            std::string expected;
            for (std::size_t i = 1; i < words.size(); ++i)
                expected += (i > 1 ? ", " : "") + row.sensor + words[i] + row.bytes;
            Lines state = splitFields(words[0], "!", 2);
            if (state.size() == 2)
                for (const char taken : state[1])
                    bmc->queue(0x04, 0x02, {Bytes{static_cast<BYTE>(taken == '0' ? 0x81 : 0)}});
            const bool known = state[0][0] != '?';
            Lines records;
            if (state[0] != "gone")
                records = {row.record(state[0].substr(known ? 0 : 1), row.place)};
            EXPECT_EQ(pass(records, known), expected) << step;
        }
    }
}

TEST_F(DriveEvents, OddRecords) {
    // Missing onboard drives without a number take the byte of the one before, zero at first.
    Lines records;
    for (const char* index : {"N/A", "300", "x"})
        records.push_back("HD;/dev/ada" + std::string(index) + ":OK:S:F;" + index + ";");
    pass(records);
    EXPECT_EQ(pass({}), "FF 70 A0 00 FF, FF 70 A0 2C FF, FF 70 A0 2C FF");

    const struct {
        Lines records;
        const char* expected;
    } rows[] = {
        {{""}, ""},
        {{"HDX;/dev/ada0:Fail:S:F;3;"}, ""},
        {{"HD;/dev/ada1:Fail"}, "FF 70 A1 00 FF"},
        {{"HD;/dev/ada2:Fail:S:F;99999999999;" + std::string(40, ';')}, "FF 70 A1 FF FF"},
        {{it("Degraded", "C5E70S260")}, "5F 70 A2 04 46"},
        {{it("Degraded", "C1ES7")}, "5F 70 A2 00 40"},
        {{raid("Degraded", "N/A")}, "FF 70 A2 00 FF"},
        // Longer than what is remembered of a state, which must not seem to change for ever.
        {{hd(std::string(45, '-') + "REBUILD")}, ""},
        // Two records of a place make one state.
        {{raid("UBad"), raid("Onln")}, "FF 70 A1 13 FF"},
    };
    for (const auto& row : rows) {
        forgetDrives();
        EXPECT_EQ(pass(row.records), row.expected) << row.records[0];
        EXPECT_EQ(pass(row.records), "") << "again: " << row.records[0];
    }
}

} // namespace
