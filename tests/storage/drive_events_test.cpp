// Which records of a drive's story raise which events and log lines.
#include "storage/drive_events.h"

#include "fake_bmc.h"
#include "sandbox.h"
#include "storage/drive_presence.h"
#include "storage/drive_state.h"
#include "text.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace {

using handler = void (*)(const list*);

void feed(handler add, const std::string& text) {
    list item{};
    copyText(item.parm, text);
    add(&item);
}

std::string hd(const std::string& state, const std::string& index = "3") {
    return "HD;/dev/ada0:" + state + ":S1:F1;" + index + ";SSD;N/A;c;m;9;9;9;9;9;IDE;30;";
}
std::string it(const std::string& state, const std::string& place = "C1E2S7") {
    return "BRCM_IT_PD;0;N/A:OK:" + state + ":S1:F1;" + place + ";HDD;N/A;m;2.00;";
}
std::string raid(const std::string& state, const std::string& place = "C1E252S3") {
    return "BRCM_IR_PD;0;w:OK:" + state + ":S1:F1;" + place + ";HDD;N/A;m;2.00;";
}

// The events that arrived, each "sensor alert type event2 event3", and forgets them.
std::string events(FakeBmc& bmc) {
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

struct kind_of_drive {
    handler add;
    std::string (*record)(const std::string& state);
    const char *sensor, *bytes;
};
const kind_of_drive HD = {addStorageSELRecord, [](const std::string& s) { return hd(s); }, "FF",
                          "03 FF"};
const kind_of_drive IT = {addStorage3008ITSELRecord, [](const std::string& s) { return it(s); },
                          "5F", "07 42"};
const kind_of_drive RAID = {addStorageRaidSELRecord, [](const std::string& s) { return raid(s); },
                            "FF", "13 FF"};

// Every state word: the event that it raises, on the first record of a drive and later, and the
// one that is cleared when it goes to OK or elsewhere.
TEST(drive_events, state_words) {
    const struct {
        const kind_of_drive& kind;
        const char *state, *raised, *cleared_by_ok, *cleared_by_other;
    } rows[] = {
        {HD, "Fail", "A1", "A1", ""},
        {HD, "FAILED", "A6", "A6", "A6"},
        {HD, "REBUILD 28%", "A7", "A7", "A7"},
        {HD, "xRESYNC", "A7", "A7", "A7"},
        {HD, "a PredictiveFailureAnalysis", "A2", "A2", "A2"},
        {HD, "N/A", "", "", ""},
        {HD, "Failing", "", "", ""},
        {IT, "Degraded", "A2", "A2", "A2"},
        {IT, "Failed", "A1", "A1", "A1"},
        {IT, "HotSpare", "A3", "A3", "A3"},
        {IT, "OutofSync", "A5", "A5", "A5"},
        {IT, "Rebuilding", "A7", "A7", "A7"},
        {IT, "xDegraded", "", "", ""},
        {IT, "xFailed", "", "A1", "A1"},
        {IT, "HotSpares", "", "A3", "A3"},
        {IT, "OutofSync.", "", "A5", "A5"},
        {IT, "Rebuilding 5%", "", "A7", "A7"},
        {IT, "Rbld", "", "", ""},
        {RAID, "Degraded", "A2", "A2", "A2"},
        {RAID, "UBad", "A1", "A1", "A1"},
        {RAID, "UBUnsp", "A1", "A1", "A1"},
        {RAID, "DHS", "A3", "A3", "A3"},
        {RAID, "GHS", "A3", "A3", "A3"},
        {RAID, "HSPShld", "A3", "A3", "A3"},
        {RAID, "OutofSync", "A5", "A5", "A5"},
        {RAID, "Rbld", "A7", "A7", "A7"},
        {RAID, "xOutofSync", "", "A5", "A5"},
        {RAID, "xRbld", "", "", ""},
        {RAID, "Failed", "", "", ""},
        {RAID, "Rebuilding", "", "", ""},
    };
    FakeBmc bmc;
    for (const auto& row : rows) {
        const auto expected = [&](const char* alert, const std::string& type) {
            return type.empty() ? type
                                : std::string(row.kind.sensor) + " " + alert + " " + type + " " +
                                      row.kind.bytes;
        };
        const auto show = [&](const char* state) {
            feed(row.kind.add, row.kind.record(state));
            return events(bmc);
        };
        SCOPED_TRACE(row.state);
        static_first_init = 1;
        EXPECT_EQ(show(row.state), expected("70", row.raised));
        static_first_init = 0;
        EXPECT_EQ(show(row.state), "") << "unchanged";
        EXPECT_EQ(show("OK"), expected("F0", row.cleared_by_ok));
        EXPECT_EQ(show(row.state), expected("70", row.raised));
        EXPECT_EQ(show("other"), expected("F0", row.cleared_by_other));
        freeDriveLists();
    }
}

TEST(drive_events, old_state_is_cleared_after_the_new_one_is_raised) {
    const struct {
        const kind_of_drive& kind;
        const char *from, *to, *expected;
    } rows[] = {
        {HD, "PredictiveFailureAnalysis", "Fail", "FF 70 A1 03 FF, FF F0 A2 03 FF"},
        {HD, "Fail", "PredictiveFailureAnalysis", "FF 70 A2 03 FF"},
        {HD, "REBUILD 1%", "REBUILD 2%", "FF 70 A7 03 FF, FF F0 A7 03 FF"},
        {IT, "HotSpare", "Rebuilding", "5F 70 A7 07 42, 5F F0 A3 07 42"},
        {RAID, "UBad", "UBUnsp", "FF 70 A1 13 FF, FF F0 A1 13 FF"},
    };
    FakeBmc bmc;
    for (const auto& row : rows) {
        static_first_init = 1;
        feed(row.kind.add, row.kind.record(row.from));
        static_first_init = 0;
        events(bmc);
        feed(row.kind.add, row.kind.record(row.to));
        EXPECT_EQ(events(bmc), row.expected) << row.from << " to " << row.to;
        freeDriveLists();
    }
}

// A drive is there from the start, a second one appears, the first goes and comes back.
TEST(drive_events, presence) {
    if (!enterSandbox())
        GTEST_SKIP() << SANDBOX_DENIED;
    using lines = std::vector<std::string>;
    const struct {
        handler add;
        std::string first, back, second;
        const char *events_new, *events_missing, *events_back, *events_gone_again;
        lines log_init, log_new, log_missing, log_back;
    } rows[] = {
        {addStorageSELRecord, hd("OK"), hd("OK", "19"), "HD;/dev/ada1:Fail:S2:F2;4;SSD;",
         "FF F0 A0 04 FF, FF 70 A1 04 FF", "FF 70 A0 03 FF", "FF F0 A0 13 FF", "FF 70 A0 13 FF",
         lines{"add storage record init   /dev/ada0"},
         lines{"add storage record   /dev/ada1", "send Smart SEL   done", "send Smart SEL   done"},
         lines{"checkDrivePresence  HDD missing", "send Smart SEL   done"},
         lines{"send Smart SEL   done"}},
        {addStorage3008ITSELRecord, it("Ready"), it("Ready"), it("Failed", "C0E1S66"),
         "5F F0 A0 42 01, 5F 70 A1 42 01", "5F 70 A0 07 42", "5F F0 A0 07 42", "5F 70 A0 07 42",
         lines{"Add 3008 record init  new drive", "Add 3008 record init  C1E2S7"},
         lines{"send Smart SEL   done", "Add 3008 record  new drive", "Add 3008 record  C0E1S66",
               "send Smart SEL   done"},
         lines{"send Smart SEL   done", "checkDrivePresence  3008 IT device missing"},
         lines{"send Smart SEL   done", "Add 3008 record  drive found",
               "Found 3008 record  C1E2S7"}},
        {addStorageRaidSELRecord, raid("Onln", "C0E252S3"), raid("Onln", "C0E252S3"),
         raid("DHS", "C0E252S4"), "FF F0 A0 04 FF, FF 70 A3 04 FF", "5F 70 A0 03 3C",
         "FF F0 A0 03 FF", "5F 70 A0 03 3C",
         lines{"Add RAID record init  new drive", "Add RAID record init  C0E252S3"},
         lines{"send Smart SEL   done", "Add RAID record  new drive", "Add RAID record  C0E252S4",
               "send Smart SEL   done"},
         lines{"send Smart SEL   done", "checkDrivePresence  Raid device missing"},
         lines{"send Smart SEL   done", "Add RAID record  drive found",
               "Found RAID record  C0E252S3"}},
    };
    FakeBmc bmc;
    lines logged;
    const auto expect = [&](const std::string& what, const lines& log) {
        EXPECT_EQ(events(bmc), what);
        logged.insert(logged.end(), log.begin(), log.end());
        EXPECT_EQ(datedLog("com"), logged);
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.first);
        static_first_init = 1;
        feed(row.add, row.first);
        expect("", row.log_init);
        static_first_init = 0;
        const auto pass = [&](const std::string& record) {
            resetDrivePresenceCheck();
            feed(row.add, row.second);
            if (!record.empty())
                feed(row.add, record);
            checkDrivePresence();
        };
        pass(row.first);
        expect(row.events_new, row.log_new);
        pass("");
        expect(row.events_missing, row.log_missing);
        pass("");
        expect("", {});
        pass(row.back);
        expect(row.events_back, row.log_back);
        pass(row.back);
        expect("", {});
        pass("");
        expect(row.events_gone_again, row.log_missing);
        freeDriveLists();
    }
}

// A list that is still empty after the first pass: an onboard drive counts as known from the
// start, a drive behind a controller as new.
TEST(drive_events, first_drive_in_a_later_pass) {
    FakeBmc bmc;
    static_first_init = 0;
    feed(addStorageSELRecord, hd("Fail"));
    EXPECT_EQ(events(bmc), "FF 70 A1 03 FF");
    feed(addStorage3008ITSELRecord, it("Failed"));
    EXPECT_EQ(events(bmc), "5F F0 A0 07 42, 5F 70 A1 07 42");
    feed(addStorageRaidSELRecord, raid("UBad"));
    EXPECT_EQ(events(bmc), "FF F0 A0 13 FF, FF 70 A1 13 FF");
}

// Missing onboard drives without a number take the byte of the one before, zero at first.
TEST(drive_events, missing_drive_without_an_index) {
    FakeBmc bmc;
    for (const char* index : {"N/A", "300", "x"})
        feed(addStorageSELRecord, "HD;/dev/ada" + std::string(index) + ":OK:S:F;" + index + ";");
    resetDrivePresenceCheck();
    checkDrivePresence();
    EXPECT_EQ(events(bmc), "FF 70 A0 00 FF, FF 70 A0 2C FF, FF 70 A0 2C FF");
}

TEST(drive_events, odd_records) {
    const std::string long_state = std::string(45, '-') + "REBUILD";
    const struct {
        handler add;
        std::string record;
        const char* expected;
    } rows[] = {
        {addStorageSELRecord, "", ""},
        {addStorageSELRecord, "HDX;/dev/ada0:Fail:S:F;3;", ""},
        {addStorageSELRecord, "PT;/dev/ada0p1:0:Fail:1:2:3:", ""},
        {addStorage3008ITSELRecord, raid("Degraded"), ""},
        {addStorageRaidSELRecord, it("Degraded"), ""},
        {addStorageSELRecord, "HD;/dev/ada0:Fail", "FF 70 A1 00 FF"},
        {addStorageSELRecord, hd("Fail", "N/A"), "FF 70 A1 00 FF"},
        {addStorageSELRecord, hd("Fail", "99999999999") + std::string(40, ';'), "FF 70 A1 FF FF"},
        {addStorage3008ITSELRecord, it("Degraded", "C5E70S260"), "5F 70 A2 04 46"},
        {addStorage3008ITSELRecord, it("Degraded", "C1ES7"), "5F 70 A2 00 40"},
        {addStorageRaidSELRecord, raid("Degraded", "C17E1S18"), "FF 70 A2 12 FF"},
        {addStorageRaidSELRecord, raid("Degraded", "N/A"), "FF 70 A2 00 FF"},
        {addStorageSELRecord, hd(long_state), ""},
    };
    FakeBmc bmc;
    for (const auto& row : rows) {
        static_first_init = 1;
        feed(row.add, row.record);
        EXPECT_EQ(events(bmc), row.expected) << row.record;
        static_first_init = 0;
        feed(row.add, row.record);
        EXPECT_EQ(events(bmc), "") << "again: " << row.record;
        freeDriveLists();
    }
}

} // namespace
