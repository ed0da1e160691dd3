// What the storage collectors make of whole recorded servers, and what they ask. expected/HOST.txt
// holds a host's records without the ";" at their ends.
#include "sandbox.h"
#include "state/flags.h"
#include "storage/listing.h"
#include "storage/megaraid.h"
#include "storage/onboard.h"
#include "storage/raid_card.h"
#include "storage/rste.h"
#include "storage/sas3008.h"
#include "text.h"
#include "tools/ask.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

namespace {

const std::filesystem::path STORAGE_TESTS = std::filesystem::path(__FILE__).parent_path();

using collector = void (*)(storage_items& items, const char* label);

std::string card_pattern;                     // of the configuration
std::string folder;                           // of the recorded host
std::map<std::string, program_answer> others; // in place of the host's answers, by command line
std::vector<std::string> asked;

program_answer run(const command_line& words, const program_limits& limits) {
    std::string line;
    for (const std::string& word : words)
        line += (line.empty() ? "" : " ") + word;
    asked.push_back(line);
    const auto other = others.find(line);
    return other == others.end() ? runProgram(words, limits) : other->second;
}

std::optional<std::string> readConfiguration(const char* path) {
    return path == std::string("/opt/norvik/vyn.ini")
               ? "  raidCards = \"" + card_pattern + "\";\n"
               : "Hdd count,3\nCVS240A00719,8\nCVS240A0071,5\nxFX77AB0501x,3\n";
}

// False where a sandbox is denied.
bool play(const std::string& host) {
    if (!enterSandbox())
        return false;
    setStopFlag(0);
    card_pattern = "northwind raid|x  y";
    folder = STORAGE_TESTS.string() + "/../../hosts/" + host;
    setenv("PATH", (folder + "/bin").c_str(), 1);
    tools.run = run;
    tools.read_file = readConfiguration;
    tools.list_folder = [](const char* path) { return listFolder((folder + path).c_str()); };
    return true;
}

std::string told(const std::vector<collector>& collectors) {
    beginAskingCycle();
    asked.clear();
    storage_items items;
    for (const collector collect : collectors)
        collect(items, "label ->");
    std::string text;
    for (const list* item = items.head(); item != nullptr; item = item->next)
        text.append(item->parm).append("\n");
    return text;
}

struct recording {
    const char* host;
    std::vector<collector> collectors;
};
void PrintTo(const recording& played, std::ostream* out) {
    *out << played.host;
}
class RecordedHost : public testing::TestWithParam<recording> {};

TEST_P(RecordedHost, IsToldAsEver) {
    const auto& [host, collectors] = GetParam();
    if (!play(host))
        GTEST_SKIP() << SANDBOX_DENIED;
    std::istringstream file(fileText(STORAGE_TESTS / "expected" / (std::string(host) + ".txt")));
    std::string expected;
    for (std::string line; std::getline(file, line);)
        expected += line + ";\n";
    EXPECT_EQ(told(collectors), expected) << host;
}

INSTANTIATE_TEST_SUITE_P(
    Storage, RecordedHost,
    testing::Values(recording{"storage-megaraid", {collectMegaraid, collectSas3008, collectLsi}},
                    recording{"storage-sas3008-ir", {collectMegaraid, collectSas3008}},
                    recording{"storage-rste-two", {collectRste}},
                    recording{"storage-raidcard", {collectMegaraid, collectRaidCards}},
                    recording{"storage-onboard", {collectMegaraid, collectOnboard}},
                    recording{"freebsd-14", {collectMegaraid, collectOnboard}}));

TEST(Collectors, AskNoMoreThanTheyNeed) {
    if (!play("storage-onboard"))
        GTEST_SKIP() << SANDBOX_DENIED;
    for (const collector collect :
         {collectMegaraid, collectLsi, collectSas3008, collectRste, collectOnboard}) {
        storage_items full;
        while (!full.full())
            full.add("x");
        collect(full, "label ->");
    }
    EXPECT_EQ(asked, (std::vector<std::string>{"storcli show", "sas3ircu list", "graid list"}));
    storage_items items;
    while (items.count() < STORAGE_LINES_MOST - 3)
        items.add("x");
    collectOnboard(items, "label ->");
    EXPECT_EQ(asked.back(), "newfs -N /dev/ada0p2");

    // Controllers stay while the same disks are listed, and so does what was known of them.
    const std::string records = told({collectOnboard});
    EXPECT_EQ(std::count(asked.begin(), asked.end(), "lspci -v"), 0);
    others["lspci -v"] = {program_end::timed_out, 0, ""};
    others["geom disk list"] = {program_end::exited, 0,
                                fileText(folder + "/out/geom_disk_list") + "Geom name: cd7\n"};
    EXPECT_EQ(told({collectOnboard}), records);
    EXPECT_EQ(std::count(asked.begin(), asked.end(), "lspci -v"), 1);
}

TEST(Collectors, TakeTheBusOfADiskThatNeverTellsItsSerialNumber) {
    if (!play("storage-onboard"))
        GTEST_SKIP() << SANDBOX_DENIED;
    others["smartctl -i -H -A /dev/ada0"] = {program_end::exited, 2, ""};
    const std::string disks = fileText(folder + "/out/geom_disk_list");
    others["geom disk list"] = {program_end::exited, 0, disks.substr(0, disks.find("\n\n") + 1)};
    std::string index;
    int passes = 0;
    for (index = "N/A"; index == "N/A" && passes < 100; ++passes) {
        std::string records = told({collectOnboard});
        replaceEmptyToNA(records);
        index = splitFields(records, ";:", 99).at(5);
    }
    EXPECT_EQ(index, "0");
    EXPECT_EQ(passes, 61);
}

TEST(Collectors, LogOnceWhatKeepsFromCards) {
    if (!play("storage-raidcard"))
        GTEST_SKIP() << SANDBOX_DENIED;
    for (const char* question : {"storcli /c0 show", "storcli /c1/vall show all"})
        others[question] = {program_end::not_started, 0, ""};
    told({collectRaidCards});
    EXPECT_EQ(datedLog("err"), std::vector<std::string>{"label ->  command not found"});
    card_pattern = "(";
    EXPECT_EQ(told({collectRaidCards}) + told({collectRaidCards}), "");
    EXPECT_EQ(datedLog("err").back(), "raidCards ->  no expression that can be used: (");
    EXPECT_EQ(datedLog("err").size(), 2U);
}

TEST(Listing, MembersThatDontFitAreLeftOutWhole) {
    const std::vector<std::string> members(90, "C0E252S7");
    EXPECT_EQ(withList("x;", members, ',', ";1").size(), 2U + 27 * 9 - 1 + 2);
    EXPECT_EQ(withList(std::string(250, 'x'), members, ',', ";1"), std::string(250, 'x') + ";1");
    EXPECT_EQ(withList("x;", {"1", "", "2"}, ':'), "x;1::2");
}

} // namespace
