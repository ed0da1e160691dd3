// The collectors of controllers and RAID volumes when their programs hang, fail or print something
// else.
#include "fake_programs.h"
#include "sandbox.h"
#include "state/flags.h"
#include "storage/megaraid.h"
#include "storage/raid_card.h"
#include "storage/rste.h"
#include "storage/sas3008.h"
#include "storage/storage_kind.h"

#include <gtest/gtest.h>

namespace {

const std::string LIST = "Index Type\n0 SAS3008\n1 SAS3008\n";

std::string display(const std::string& raid, const std::string& volumes = "") {
    return "Controller information\nRAID Support : " + raid + "\nIR Volume information\n" +
           volumes +
           "Physical device information\nDevice is a Hard disk\nEnclosure # : 2\nSlot # : 3\n"
           "State : Ready (RDY)\nEnclosure information\n";
}

const std::string SHOW = "Number of Controllers = 1\n 0 AVAGO X9\n";
const std::string RULE = "-----\n";
const std::string HEADER = "EID:Slt DID State Size Med\n";
const std::string CARD = "Controller = 0\nProduct Name = X9\nVD LIST :\n" + RULE +
                         "DG/VD TYPE State Size\n" + RULE + "0/1   R1   Dgrd  2 TB\n" + RULE +
                         "PD LIST :\n" + RULE + HEADER + RULE + "252:0   8   Onln  1 TB SSD\n" +
                         RULE;

class RaidCollectors : public testing::Test {
  protected:
    void SetUp() override {
        if (!enterSandbox())
            GTEST_SKIP() << SANDBOX_DENIED;
        setStopFlag(0);
        programs.files["/opt/norvik/vyn.ini"] = "raidCards = \"x9\";\n";
        programs.print("sas3ircu list", LIST);
        programs.print("sas3ircu 0 display", display("No"));
        programs.print("sas3ircu 1 display", display("Yes"));
        programs.print("storcli show", SHOW);
        programs.print("storcli /c0 show", CARD);
        programs.print("storcli /c0/eall/sall show all", "Drive /c0/e252/s0 :\nSN = S0\nWWN = W\n");
    }

    // Collects in a new cycle.
    std::string told(void (*collect)(storage_items& items, const char* label)) {
        for (int cycle = 0; cycle < HUNG_CYCLES; ++cycle)
            beginAskingCycle();
        programs.asked.clear();
        items.emplace();
        collect(*items, "label ->");
        std::string text;
        for (const list* item = items->head(); item != nullptr; item = item->next)
            text.append(item->parm).append("\n");
        return text;
    }

    fake_programs programs;
    std::optional<storage_items> items;
};

// A listing that is no answer says nothing of the drives behind it, and of no others.
TEST_F(RaidCollectors, ABrokenListingMissesNoDrive) {
    const struct {
        void (*collect)(storage_items& items, const char* label);
        const char* question;
        bool it_listed, raid_listed;
    } rows[] = {
        {collectSas3008, "sas3ircu list", false, false},
        {collectSas3008, "sas3ircu 0 display", false, true},
        {collectSas3008, "sas3ircu 1 display", true, false},
        {collectRaidCards, "storcli show", true, false},
        {collectRaidCards, "storcli /c0 show", true, false},
        {collectRaidCards, "storcli /c0/eall/sall show all", true, true},
        {collectRaidCards, "storcli /c0/vall show all", true, true},
    };
    const program_answer broken[] = {
        {program_end::timed_out, 0, ""},    {program_end::not_started, 0, ""},
        {program_end::cut, 0, LIST + SHOW}, {program_end::missing, 0, ""},
        {program_end::exited, 1, CARD},     {program_end::exited, 0, "garbage\n"},
    };
    for (const auto& row : rows) {
        const program_answer well = programs.answers[row.question];
        for (const program_answer& answer : broken) {
            const std::string whole = told(row.collect);
            EXPECT_TRUE(items->allListed(drive_kind::it) && items->allListed(drive_kind::raid));
            programs.answers[row.question] = answer;
            EXPECT_LE(told(row.collect).size(), whole.size());
            SCOPED_TRACE(row.question + std::to_string(static_cast<int>(answer.end)));
            EXPECT_EQ(items->allListed(drive_kind::it), row.it_listed);
            EXPECT_EQ(items->allListed(drive_kind::raid), row.raid_listed);
            EXPECT_TRUE(items->allListed(drive_kind::onboard));
            programs.answers[row.question] = well;
        }
    }
}

TEST_F(RaidCollectors, ADisplayThatNeverCameMayHoldAnyDrive) {
    programs.print("sas3ircu list", "7 SAS3008\n");
    programs.answers["sas3ircu 7 display"] = {program_end::timed_out, 0, ""};
    told(collectSas3008);
    EXPECT_FALSE(items->allListed(drive_kind::it) || items->allListed(drive_kind::raid));
    // One that never told anything has no drives.
    programs.print("sas3ircu 7 display", "garbage\n");
    told(collectSas3008);
    EXPECT_TRUE(items->allListed(drive_kind::it) && items->allListed(drive_kind::raid));
}

TEST_F(RaidCollectors, StatesOfAFailedListingAreNoNews) {
    told(collectSas3008);
    programs.print("sas3ircu 1 display", display("Yes"), 1);
    ASSERT_NE(told(collectSas3008).find("BRCM_IR_PD"), std::string::npos);
    EXPECT_TRUE(items->stateKnown(1));  // drive of controller 0
    EXPECT_FALSE(items->stateKnown(3)); // of controller 1
}

TEST_F(RaidCollectors, MembersThatDontFitAreLeftOutWhole) {
    std::string volumes = "IR volume 1\nVolume ID : 322\nRAID level : RAID0\nSize (in MB) : 512\n";
    for (int slot = 10; slot < 90; ++slot)
        volumes += "PHY Enclosure#/Slot# : 2:" + std::to_string(slot) + "\n";
    programs.print("sas3ircu 0 display", display("Yes", volumes));
    std::string record = "BRCM_IR_VD;1;0-322;N/A;;RAID0;0.50;";
    for (int slot = 10; slot < 37; ++slot)
        record += (slot == 10 ? "C0E2S" : ",C0E2S") + std::to_string(slot);
    EXPECT_EQ(told(collectSas3008), "BRCM_IR_CNTL;0;0;;;;;\n" + record +
                                        ";\nBRCM_IR_PD;0;N/A:OK:Ready::;C0E2S3;;N/A;;;\n"
                                        "BRCM_IR_CNTL;1;1;;;;;\n"
                                        "BRCM_IR_PD;0;N/A:OK:Ready::;C1E2S3;;N/A;;;\n");
}

TEST_F(RaidCollectors, ACardIsAskedThreeTimes) {
    programs.print("storcli /c0/vall show all", "/c0/v1 :\nOS Drive Name = m\n");
    const std::string records = "BRCM_IR_CNTL;;0;X9;;;;\nBRCM_IR_VD;1;m;PredictiveFailureAnalysis;"
                                "Dgrd;R1;2;;\nBRCM_IR_PD;0;W:OK:Onln:S0:;C0E252S0;SSD;N/A;;1;\n";
    EXPECT_EQ(told(collectRaidCards), records);
    EXPECT_EQ(programs.asked.size(), 4U);
    // Paths without enclosures stand for the slots.
    programs.print("storcli /c0/eall/sall show all", "Status = Failure\n", 1);
    programs.print("storcli /c0/sall show all", "Drive /c0/s0 :\nSN = S0\nWWN = W\n");
    EXPECT_EQ(told(collectRaidCards), records);
    // One that hangs is left alone; what is known of its drives without it is told.
    programs.answers["storcli /c0/vall show all"].end = program_end::timed_out;
    EXPECT_NE(told(collectRaidCards).find("PD;0;:OK:Onln::;C0E252S0;SSD;N/A;;1;"),
              std::string::npos);
    EXPECT_EQ(programs.asked.back(), "storcli /c0/vall show all");
    EXPECT_TRUE(items->stateKnown(2));
}

TEST_F(RaidCollectors, AStorcliThatCantBeStartedIsLoggedOnce) {
    for (const char* question : {"storcli show", "storcli /c0 show", "storcli /c0/vall show all"})
        programs.answers[question].end = program_end::not_started;
    told(collectRaidCards);
    programs.print("storcli show", SHOW);
    told(collectRaidCards);
    EXPECT_EQ(datedLog("err"), std::vector<std::string>(2, "label ->  command not found"));
    programs.files.clear();
    EXPECT_EQ(told(collectRaidCards), "");
    EXPECT_FALSE(items->allListed(drive_kind::raid));
}

TEST_F(RaidCollectors, AFullPassAsksNoMore) {
    for (auto* collect : {collectMegaraid, collectLsi, collectSas3008, collectRaidCards}) {
        beginAskingCycle();
        programs.asked.clear();
        storage_items full;
        while (!full.full())
            full.add("x");
        collect(full, "label ->");
        EXPECT_LE(programs.asked.size(), 1U); // the list of controllers
    }
}

// A drive that does not answer is told without what is not known, the others whole.
TEST_F(RaidCollectors, AHungDriveCostsItsOwnHealth) {
    programs.print("storcli /c0 /eall /sall show",
                   RULE + HEADER + RULE + "252:0   8   Onln\n252:1   9   Onln\n" + RULE);
    for (const std::string disk : {"/dev/pass8", "/dev/pass9"})
        programs.print("smartctl -i -H " + disk,
                       "smartctl 7.4\nSerial Number: S\nFirmware Version: F\n"
                       "SMART Health Status: OK but\n",
                       8);
    EXPECT_EQ(told(collectMegaraid), "LSI;/dev/pass8:PredictiveFailureAnalysis:S:F:0;\n"
                                     "LSI;/dev/pass9:PredictiveFailureAnalysis:S:F:1;\n");
    programs.answers["smartctl -i -H /dev/pass8"] = {program_end::timed_out, 0, ""};
    EXPECT_EQ(told(collectLsi), "LSI;8:N/A::;\nLSI;9:Fail:S:F;\n");
}

TEST_F(RaidCollectors, RsteMembersKeepTheirPlace) {
    const std::string volume = "Providers:\n1. Name: raid/r0\nConsumers:\n1. Name: ada1\n2. Name: "
                               "ada0\n3. Name: ada1\n";
    programs.print("graid list", "Geom name: A\n" + volume + "Geom name: B\n" + volume);
    programs.print("camcontrol devlist", "<x>  at scbus7 target 0 lun 0 (ada0,pass0)\n");
    for (const std::string disk : {"0", "1"})
        programs.print("smartctl -i -H -A /dev/ada" + disk,
                       "smartctl 7.4\nSerial Number: S" + disk + "\nSMART Health Status: OK\n");
    const auto records = [](const std::string& indexes, int ada0, const std::string& ada1) {
        std::string text;
        for (const int place : {0, 1})
            text += "Logical;raid/r0;;Intel RSTe;;;" + indexes + ";" + std::to_string(place) +
                    ";\nHD;/dev/ada0:OK:S0:;" + std::to_string(place * 16 + ada0) +
                    ";\nHD;/dev/ada1" + ada1 + std::to_string(place * 16 + 3) + ";\n";
        return text;
    };
    programs.files["/opt/norvik/vyn.hdd.ini"] = "S1,3\n";
    EXPECT_EQ(told(collectRste), records("3:7:3", 7, ":OK:S1:;"));
    programs.answers["smartctl -i -H -A /dev/ada1"].end = program_end::timed_out;
    EXPECT_EQ(told(collectRste), records("3:7:3", 7, ":N/A::;"));
    EXPECT_FALSE(items->stateKnown(2));
    EXPECT_TRUE(items->stateKnown(1) && items->allListed(drive_kind::onboard));
    // Without a map every drive has the index of the first.
    programs.files.clear();
    programs.answers["smartctl -i -H -A /dev/ada1"].end = program_end::exited;
    EXPECT_NE(told(collectRste).find("Intel RSTe;;;0:0:0;0;"), std::string::npos);
    programs.print("graid list", "");
    EXPECT_EQ(told(collectRste), "");
    EXPECT_FALSE(items->allListed(drive_kind::onboard));
}

TEST_F(RaidCollectors, TheKindOfStorageStaysWhileGraidDoesNotTell) {
    const struct {
        program_answer answer;
        int kind;
    } rows[] = {
        {{program_end::missing, 0, ""}, 0},   {{program_end::exited, 0, "x GEOM Name: y\n"}, 1},
        {{program_end::timed_out, 0, ""}, 1}, {{program_end::exited, 1, ""}, 1},
        {{program_end::exited, 0, ""}, 0},
    };
    std::string log;
    for (const auto& row : rows) {
        for (int cycle = 0; cycle < HUNG_CYCLES; ++cycle)
            beginAskingCycle();
        programs.answers["graid list"] = row.answer;
        EXPECT_EQ(getHddType(), row.kind);
        log += "hdd type ->  " + std::to_string(row.kind) + "\n";
    }
    EXPECT_EQ(fileText("/opt/norvik/vyn.log"), log);
}

} // namespace
