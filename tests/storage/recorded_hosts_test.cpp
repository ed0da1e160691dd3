// What the storage collectors make of whole recorded servers: expected/HOST.txt holds the records
// of each collector that finds any.
#include "fake_programs.h"
#include "storage/megaraid.h"
#include "storage/onboard.h"
#include "storage/raid_card.h"
#include "storage/rste.h"
#include "storage/sas3008.h"

#include <gtest/gtest.h>

namespace {

using collector = void (*)(storage_items& items, const char* label);
const std::pair<const char*, std::vector<collector>> COLLECTORS[] = {
    {"inventory", {collectMegaraid, collectSas3008, collectOnboard}},
    {"raid_card", {collectRaidCards}},
    {"lsi", {collectLsi}},
    {"rste", {collectRste}},
};

std::string told(const std::vector<collector>& collectors) {
    storage_items items;
    for (const collector collect : collectors)
        collect(items, "test ->");
    std::string text;
    for (const list* item = items.head(); item != nullptr; item = item->next)
        text.append(item->parm).append("\n");
    return text;
}

// The records of a collector in the file of a host.
std::string expected(const std::string& host, const std::string& wanted) {
    std::ifstream file(std::filesystem::path(__FILE__).parent_path() / "expected" /
                       (host + ".txt"));
    std::string records, section;
    for (std::string line; std::getline(file, line);) {
        if (line.front() == '[') {
            section = line.substr(1, line.find(']') - 1);
            line.erase(0, section.size() + 3);
        }
        if (section == wanted && line.compare(0, 7, "status ") != 0)
            records += line + ";\n";
    }
    return records;
}

class RecordedHost : public testing::TestWithParam<const char*> {};

TEST_P(RecordedHost, IsToldAsEver) {
    const std::string host = GetParam();
    fake_programs programs;
    programs.play(host);
    programs.files["/opt/norvik/vyn.ini"] = "  raidCards = \"northwind raid|x  y\";\n";
    programs.files["/opt/norvik/vyn.hdd.ini"] =
        "Hdd count,3\nCVS240A00719,8\nCVS240A0071,5\nxFX77AB0501x,3\n";
    for (const auto& [name, collectors] : COLLECTORS)
        // The members of RSTe volumes are onboard disks too; only one of both is collected.
        if (host.find("rste") == host.npos || name != std::string("inventory")) {
            EXPECT_EQ(told(collectors), expected(host, name)) << name;
        }
}

INSTANTIATE_TEST_SUITE_P(Storage, RecordedHost,
                         testing::Values("storage-megaraid", "storage-sas3008-ir",
                                         "storage-rste-one", "storage-rste-two", "storage-raidcard",
                                         "storage-onboard"),
                         [](const auto& host) {
                             std::string name = host.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

} // namespace
