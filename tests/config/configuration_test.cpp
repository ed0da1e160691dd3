#include "config/configuration.h"
#include "config/logs.h"
#include "sandbox.h"
#include "state/flags.h"

#include <gtest/gtest.h>
#include <sys/shm.h>
#include <unistd.h>

namespace {

constexpr const char* DEFAULTS = R"(Path : 
{
  installedPath = "/opt/norvik";
  logPath = "/opt/norvik/vyn.log";
  errlogPath = "/opt/norvik/vyn.err.log";
  commandlogPath = "/opt/norvik/vyn.com.log";
};
Config : 
{
  updateFreq = 10;
};
Customize : 
{
  nicStatusSel = true;
  intelRsteVroc = true;
  raidCard3rdParty = false;
  raidCards = "";
};
)";

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
        bool replaced;
    } rows[] = {
        {"", 10, true},
        {"Path : { logPath = \"x\"; }; Config : { updateFreq = 5; }; broken =", 10, true},
        {withFreq("0"), 1, false},
        {withFreq("-5"), 1, false},
        {withFreq("600"), 60, false},
        {withFreq("\"7\""), 1, false},
        {withFreq("7"), 7, false},
        {"Config : { };\n", 1, false},
    };
    for (const auto& row : rows) {
        updateSec = 0;
        std::remove(ini_file);
        if (!row.file.empty())
            writeFile(ini_file, "w", row.file);
        EXPECT_EQ(initIni(), 0) << row.file;
        EXPECT_EQ(updateSec, row.seconds) << row.file;
        EXPECT_EQ(fileText(ini_file), row.replaced ? DEFAULTS : row.file);
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

TEST(Flags, ReadWriteAndMissingSegments) {
    if (!enterSandbox())
        GTEST_SKIP() << SANDBOX_DENIED;
    EXPECT_EQ(getStopFlag(), 1) << "a missing segment reads 1";
    setStopFlag(0);
    setPauseFlag(0);
    setCurPauseFlag(0);
    EXPECT_EQ(getStopFlag() + getPauseFlag() + getCurPauseFlag(), 0);
    setPauseFlag(1);
    EXPECT_EQ(getCurPauseFlag(), 1);
    setPauseFlag(0);
    EXPECT_EQ(getCurPauseFlag(), 1) << "clearing pause leaves current pause";
    setPauseFlag(-2);
    EXPECT_EQ(getPauseFlag(), -2);

    shmid_ds segment{};
    for (int i = 0; i < 1000; ++i)
        setPauseFlag(i & 1);
    ASSERT_EQ(shmctl(pause_shm->shm_id, IPC_STAT, &segment), 0);
    EXPECT_EQ(segment.shm_nattch, 1u) << "attachments do not pile up";
    EXPECT_EQ(segment.shm_perm.mode & 0777, 0666);

    shmctl(pause_shm->shm_id, IPC_RMID, nullptr);
    setPauseFlag(0);
    EXPECT_EQ(getPauseFlag(), 0) << "a removed segment is made anew";
    removeHeldFlags();
    EXPECT_EQ(getPauseFlag(), 1);
}
