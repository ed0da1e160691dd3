// Drive events that no tool's output brings about.
#include "storage/drive_events.h"

#include "bmc_test.h"
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
    // A pass of these records. Returns the events that arrived, each "sensor alert type event2
    // event3".
    std::string pass(const Lines& records, bool state_known = true) {
        bmc->forget();
        resetDrivePresenceCheck();
        for (const std::string& text : records) {
            list item{};
            copyText(item.parm, text);
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
        return all;
    }
};

// One state after the other, each with the alerts and event types that it brings.
TEST_F(DriveEvents, OddStates) {
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
    };
    Lines records;
    for (const auto& row : rows) {
        static_first_init = 1;
        records.emplace_back();
        for (const std::string& step : splitFields(row.states, "|", 99)) {
            const Lines words = splitFields(step, ">", 9);
            std::string expected;
            for (std::size_t i = 1; i < words.size(); ++i)
                expected += (i > 1 ? ", " : "") + row.sensor + words[i] + row.bytes;
            records.back() = row.record(words[0], row.place);
            EXPECT_EQ(pass(records), expected) << step;
        }
    }
}

// A list that is still empty after the first pass: an onboard drive counts as known from the
// start, a drive behind a controller as new.
TEST_F(DriveEvents, FirstDriveInALaterPass) {
    static_first_init = 1;
    pass({});
    EXPECT_EQ(pass({hd("Fail"), it("Failed")}), "FF 70 A1 03 FF, 5F F0 A0 07 42, 5F 70 A1 07 42");
}

TEST_F(DriveEvents, OddRecords) {
    static_first_init = 1;
    const struct {
        std::string record;
        const char* expected;
    } rows[] = {
        {"", ""},
        {"HDX;/dev/ada0:Fail:S:F;3;", ""},
        {"HD;/dev/ada1:Fail", "FF 70 A1 00 FF"},
        {"HD;/dev/ada2:Fail:S:F;99999999999;" + std::string(40, ';'), "FF 70 A1 FF FF"},
        {it("Degraded", "C5E70S260"), "5F 70 A2 04 46"},
        {it("Degraded", "C1ES7"), "5F 70 A2 00 40"},
        {raid("Degraded", "N/A"), "FF 70 A2 00 FF"},
        // Longer than what is remembered of a state, which must not seem to change for ever.
        {hd(std::string(45, '-') + "REBUILD"), ""},
    };
    Lines records;
    for (const auto& row : rows) {
        static_first_init = 1;
        records.push_back(row.record);
        EXPECT_EQ(pass(records), row.expected) << row.record;
        EXPECT_EQ(pass(records), "") << "again: " << row.record;
    }
    // Missing onboard drives without a number take the byte of the one before, zero at first.
    EXPECT_EQ(pass({}), "FF 70 A0 00 FF, FF 70 A0 0F FF, FF 70 A0 03 FF, 5F 70 A0 04 46, "
                        "5F 70 A0 00 40, 5F 70 A0 00 00");
}

// A record in state Missing says nothing of the place that it names, of two records of one place
// the first counts, and a state that is not known is no news.
TEST_F(DriveEvents, RecordsThatDontCount) {
    static_first_init = 1;
    EXPECT_EQ(pass({it("Missing"), it("Degraded"), it("Failed"), it("Missing"), hd("Fail")}),
              "5F 70 A2 07 42, FF 70 A1 03 FF");
    EXPECT_EQ(pass({it("Failed"), hd("N/A")}, false), "");
    EXPECT_EQ(pass({it("Degraded"), hd("OK")}), "FF F0 A1 03 FF");
    EXPECT_EQ(pass({it("Missing"), hd("OK")}), "5F 70 A0 07 42");
}

// What the BMC does not take is told again while it is true.
TEST_F(DriveEvents, AreToldUntilTheBmcTakesThem) {
    static_first_init = 1;
    pass({it("Optimal"), raid("Onln")});
    for (const char* state : {"Failed", "Degraded"}) {
        bmc->answer(0x04, 0x02, {0x81});
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(pass({it(state)}).substr(0, 4), "5F 7") << state;
        bmc->answer(0x04, 0x02, {0});
    }
    EXPECT_EQ(pass({it("Degraded")}), "5F 70 A2 07 42, 5F 70 A0 03 7C");
    EXPECT_EQ(pass({it("Degraded")}), "");
}

} // namespace
