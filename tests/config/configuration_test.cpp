#include "config/configuration.h"
#include "config/logs.h"
#include "sandbox.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Blanks and line ends left out.
constexpr const char* DEFAULTS =
    "Path:{installedPath=\"/opt/norvik\";logPath=\"/opt/norvik/vyn.log\";"
    "errlogPath=\"/opt/norvik/vyn.err.log\";commandlogPath=\"/opt/norvik/vyn.com.log\";};"
    "Config:{updateFreq=10;};Customize:{nicStatusSel=true;intelRsteVroc=true;"
    "raidCard3rdParty=false;raidCards=\"\";};";

std::string withFreq(const std::string& value) {
    return "Config : { updateFreq = " + value + "; };\n";
}

} // namespace

TEST(Configuration, ReadingClampingAndRewriting) {
    if (!enterSandbox())
        GTEST_SKIP() << SANDBOX_DENIED;
    const struct {
        std::string file; // "" is none
        int seconds;
        bool replaced = false;
    } rows[] = {
        {"", 10, true},
        {"Path : { logPath = \"x\"; }; Config : { updateFreq = 5; }; broken =", 10, true},
        {withFreq("0"), 1},
        {withFreq("-5"), 1},
        {withFreq("600"), 60},
        {withFreq("\"7\""), 1},
        {withFreq("7"), 7},
        {"Config : { };\n", 1},
    };
    for (const auto& row : rows) {
        updateSec = 0;
        std::remove(ini_file);
        if (!row.file.empty())
            writeFile(ini_file, "w", row.file);
        EXPECT_EQ(initIni(), 0) << row.file;
        EXPECT_EQ(updateSec, row.seconds) << row.file;
        std::string text = fileText(ini_file);
        if (row.replaced)
            text.erase(std::remove_if(text.begin(), text.end(), isspace), text.end());
        EXPECT_EQ(text, row.replaced ? DEFAULTS : row.file);
    }
    writeFile(ini_file, "w",
              "Customize : { nicStatusSel = false; intelRsteVroc = false; raidCard3rdParty = true;"
              " raidCards = \"9361|3108\"; };\n");
    initIni();
    EXPECT_EQ(nicStatusSel, 0);
    EXPECT_EQ(intelRSTeVROC, 0);
    EXPECT_EQ(raidCard3rdParty, 1);
    EXPECT_EQ(raidCards, "9361|3108");
}

// A new period: a link stays one, and the file behind it keeps its mode.
TEST(Configuration, RewritingThePeriod) {
    if (!enterSandbox())
        GTEST_SKIP() << SANDBOX_DENIED;
    const char* const target = "/opt/norvik/elsewhere.ini";
    for (const bool linked : {false, true}) {
        std::remove(ini_file);
        writeFile(linked ? target : ini_file, "w", withFreq("7") + "Other = 3;\n");
        ASSERT_TRUE(!linked || symlink("elsewhere.ini", ini_file) == 0);
        ASSERT_EQ(chmod(ini_file, 0640), 0);
        setUpdateFreq(90);
        struct stat status {};
        ASSERT_EQ(lstat(ini_file, &status), 0);
        EXPECT_EQ(S_ISLNK(status.st_mode), linked);
        ASSERT_EQ(stat(ini_file, &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0640U);
        EXPECT_EQ(fileText(ini_file), "Config : \n{\n  updateFreq = 60;\n};\nOther = 3;\n");
    }
}
