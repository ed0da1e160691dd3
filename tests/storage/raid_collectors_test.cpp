// The collectors of controllers and RAID volumes on recorded servers of which a program hangs,
// fails or prints something else.
#include "fake_programs.h"
#include "sandbox.h"
#include "state/flags.h"
#include "storage/listing.h"
#include "storage/megaraid.h"
#include "storage/raid_card.h"
#include "storage/rste.h"
#include "storage/sas3008.h"
#include "storage/storage_kind.h"

#include <gtest/gtest.h>

namespace {

using collector = void (*)(storage_items& items, const char* label);

class RaidCollectors : public testing::Test {
  protected:
    void SetUp() override {
        if (!enterSandbox())
            GTEST_SKIP() << SANDBOX_DENIED;
        setStopFlag(0);
        programs.files["/opt/norvik/vyn.ini"] = "raidCards = \"northwind\";\n";
    }

    // The records of a pass, "?" behind one whose state is not known, and at the end the kinds of
    // drives that count as listed: onboard, IT, RAID.
    std::string told(collector collect) {
        for (int cycle = 0; cycle < HUNG_CYCLES; ++cycle)
            beginAskingCycle();
        programs.asked.clear();
        storage_items items;
        collect(items, "label ->");
        std::string text;
        std::size_t place = 0;
        for (const list* item = items.head(); item != nullptr; item = item->next)
            text += item->parm + std::string(items.stateKnown(place++) ? "\n" : "?\n");
        for (const auto& [kind, letter] :
             {std::pair(drive_kind::onboard, 'O'), {drive_kind::it, 'I'}, {drive_kind::raid, 'R'}})
            if (items.allListed(kind))
                text += letter;
        return text;
    }
    // The same with one answer replaced.
    std::string toldWith(const std::string& question, program_answer answer, collector collect) {
        programs.answers[question] = std::move(answer);
        const std::string text = told(collect);
        programs.answers.erase(question);
        return text;
    }
    static std::string kinds(const std::string& told) {
        return told.substr(told.rfind('\n') + 1);
    }

    fake_programs programs;
};

const program_answer HUNG{program_end::timed_out, 0, ""};

TEST_F(RaidCollectors, ADisplayThatNeverCameMayHoldAnyDrive) {
    programs.print("sas3ircu list", "7 SAS3008\n");
    EXPECT_EQ(toldWith("sas3ircu 7 display", HUNG, collectSas3008), "O");
    EXPECT_EQ(told(collectSas3008), "OIR"); // one that never tells anything has none
}

TEST_F(RaidCollectors, ACardIsAskedThreeTimes) {
    programs.play("storage-raidcard");
    const std::string whole = told(collectRaidCards);
    EXPECT_EQ(programs.asked.size(), 1U + 2 * 3);
    // Paths without enclosures stand for the slots.
    std::string facts = programs.recorded("storcli /c1/eall/sall show all").text;
    for (std::size_t at; (at = facts.find("/c1/e8/")) != facts.npos;)
        facts.replace(at, 7, "/c1/");
    programs.print("storcli /c1/sall show all", facts);
    EXPECT_EQ(toldWith("storcli /c1/eall/sall show all", {}, collectRaidCards), whole);
    // A card that hangs is left alone; its drives are told without what is not known.
    const std::string text = toldWith("storcli /c1/vall show all", HUNG, collectRaidCards);
    EXPECT_EQ(programs.asked.back(), "storcli /c1/vall show all");
    EXPECT_NE(text.find("VD;0;;OK;OfLn;RAID10;2.181;;\n"
                        "BRCM_IR_PD;0;:OK:Onln::;C1E8S0;HDD;N/A;;1.090;\n"),
              text.npos);
}

TEST_F(RaidCollectors, AStorcliThatCantBeStartedIsLoggedOnce) {
    programs.play("storage-raidcard");
    for (const char* question : {"storcli /c0 show", "storcli /c0/vall show all"})
        programs.answers[question] = {program_end::not_started, 0, ""};
    told(collectRaidCards);
    EXPECT_EQ(datedLog("err"), std::vector<std::string>{"label ->  command not found"});
    programs.files.clear();
    EXPECT_EQ(told(collectRaidCards), "OI");
}

TEST_F(RaidCollectors, AFullPassAsksNoMore) {
    programs.play("storage-megaraid");
    programs.print("sas3ircu list", "0 SAS3008\n");
    for (const collector collect : {collectMegaraid, collectLsi, collectSas3008, collectRste}) {
        storage_items full;
        while (!full.full())
            full.add("x");
        collect(full, "label ->");
    }
    EXPECT_EQ(programs.asked,
              (std::vector<std::string>{"storcli show", "sas3ircu list", "graid list"}));
}

TEST(Listing, MembersThatDontFitAreLeftOutWhole) {
    const std::vector<std::string> members(90, "C0E252S7");
    EXPECT_EQ(withList("x;", members, ',', ";1").size(), 2U + 27 * 9 - 1 + 2);
    EXPECT_EQ(withList(std::string(250, 'x'), members, ',', ";1"), std::string(250, 'x') + ";1");
    EXPECT_EQ(withList("x;", {"1", "", "2"}, ':'), "x;1::2");
}

} // namespace
