// Drive events that no tool's output brings about.
#include "storage/drive_events.h"

#include "fake_bmc.h"
#include "storage/drive_presence.h"
#include "storage/drive_state.h"
#include "text.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace {

using handler = void (*)(const list*);

std::string hd(const std::string& state, const std::string& index = "3") {
    return "HD;/dev/ada0:" + state + ":S1:F1;" + index + ";SSD;N/A;c;m;9;9;9;9;9;IDE;30;";
}
std::string it(const std::string& state, const std::string& place = "C1E2S7") {
    return "BRCM_IT_PD;0;N/A:OK:" + state + ":S1:F1;" + place + ";HDD;N/A;m;2.00;";
}
std::string raid(const std::string& state, const std::string& place = "C1E252S3") {
    return "BRCM_IR_PD;0;w:OK:" + state + ":S1:F1;" + place + ";HDD;N/A;m;2.00;";
}

class DriveEvents : public testing::Test {
  protected:
    static void feed(handler add, const std::string& text) {
        list item{};
        copyText(item.parm, text);
        add(&item);
    }
    // The events that arrived, each "sensor alert type event2 event3", and forgets them.
    std::string events() {
        std::string all;
        for (const Bytes& record : bmc.sent(0x04, 0x02)) {
            EXPECT_EQ(Bytes(record.begin(), record.begin() + 3), (Bytes{0x41, 0x04, 0x0D}));
            char text[32];
            std::snprintf(text, sizeof text, "%s%02X %02X %02X %02X %02X", all.empty() ? "" : ", ",
                          record[3], record[4], record[5], record[6], record[7]);
            all += text;
        }
        bmc.forget();
        return all;
    }
    FakeBmc bmc;
};

// One state after the other, each with the alerts and event types that it brings.
TEST_F(DriveEvents, OddStates) {
    const struct {
        handler add;
        std::string (*record)(const std::string&, const std::string&);
        std::string place, sensor, bytes, states;
    } rows[] = {
        {addStorageSELRecord, hd, "3", "FF ", " 03 FF",
         "FAILED>70 A6|OK>F0 A6|REBUILD 1%>70 A7|REBUILD 2%>70 A7>F0 A7|xRESYNC>70 A7>F0 A7|"
         "Fail>70 A1>F0 A7|FAILED>70 A6|a PredictiveFailureAnalysis>70 A2>F0 A6|Failing>F0 A2"},
        {addStorage3008ITSELRecord, it, "C1E2S7", "5F ", " 07 42",
         "xDegraded|xFailed|HotSpares>F0 A1|OutofSync.>F0 A3|Rebuilding 5%>F0 A5|Rbld>F0 A7"},
        {addStorageRaidSELRecord, raid, "C1E252S3", "FF ", " 13 FF",
         "xOutofSync|xRbld>F0 A5|xDHS|UBad?"},
    };
    for (const auto& row : rows) {
        static_first_init = 1;
        for (const std::string& step : splitFields(row.states, "|", 99)) {
            const std::vector<std::string> words = splitFields(step, ">", 9);
            std::string expected;
            for (std::size_t i = 1; i < words.size(); ++i)
                expected += (i > 1 ? ", " : "") + row.sensor + words[i] + row.bytes;
            feed(row.add, row.record(words[0], row.place));
            EXPECT_EQ(events(), expected) << step;
            static_first_init = 0;
        }
    }
}

// A list that is still empty after the first pass: an onboard drive counts as known from the
// start, a drive behind a controller as new.
TEST_F(DriveEvents, FirstDriveInALaterPass) {
    static_first_init = 0;
    feed(addStorageSELRecord, hd("Fail"));
    feed(addStorage3008ITSELRecord, it("Failed"));
    EXPECT_EQ(events(), "FF 70 A1 03 FF, 5F F0 A0 07 42, 5F 70 A1 07 42");
}

TEST_F(DriveEvents, OddRecords) {
    // Missing onboard drives without a number take the byte of the one before, zero at first.
    for (const char* index : {"N/A", "300", "x"})
        feed(addStorageSELRecord, "HD;/dev/ada" + std::string(index) + ":OK:S:F;" + index + ";");
    resetDrivePresenceCheck();
    checkDrivePresence();
    EXPECT_EQ(events(), "FF 70 A0 00 FF, FF 70 A0 2C FF, FF 70 A0 2C FF");

    const struct {
        handler add;
        std::string record;
        const char* expected;
    } rows[] = {
        {addStorageSELRecord, "", ""},
        {addStorageSELRecord, "HDX;/dev/ada0:Fail:S:F;3;", ""},
        {addStorage3008ITSELRecord, raid("Degraded"), ""},
        {addStorageSELRecord, "HD;/dev/ada1:Fail", "FF 70 A1 00 FF"},
        {addStorageSELRecord, "HD;/dev/ada2:Fail:S:F;99999999999;" + std::string(40, ';'),
         "FF 70 A1 FF FF"},
        {addStorage3008ITSELRecord, it("Degraded", "C5E70S260"), "5F 70 A2 04 46"},
        {addStorage3008ITSELRecord, it("Degraded", "C1ES7"), "5F 70 A2 00 40"},
        {addStorageRaidSELRecord, raid("Degraded", "N/A"), "FF 70 A2 00 FF"},
        // Longer than what is remembered of a state, which must not seem to change for ever.
        {addStorageSELRecord, hd(std::string(45, '-') + "REBUILD"), ""},
    };
    for (const auto& row : rows) {
        static_first_init = 1;
        feed(row.add, row.record);
        EXPECT_EQ(events(), row.expected) << row.record;
        static_first_init = 0;
        feed(row.add, row.record);
        EXPECT_EQ(events(), "") << "again: " << row.record;
    }
}

} // namespace
