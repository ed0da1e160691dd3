#include "bmc/start_time.h"

#include "bmc/clear.h"
#include "bmc/parameter_upload.h"
#include "bmc/time_stamp.h"
#include "bmc_test.h"

#include <thread>

namespace {

using Uploads = BmcTest;

// Start time bytes, what the file then holds, and what a later process reads back and uploads.
TEST_F(Uploads, TheStartTimeTravelsThroughItsFile) {
    const struct {
        Bytes answer;
        std::string file;
        std::string logged;
        std::string uploaded;
    } rows[] = {
        {{0, 0x62, 0x71, 0x05, 0xA3}, "bq\x05\xA3\n6271 5a3", "62715a3", "bq\x05\xA3"},
        {{0, 0x62, 0x71, 0x00, 0xA3}, "bq\n6271 0a3", "627100", "bq"},
        {{0, 0x62, 0x0A, 0x05, 0xA3}, "b\n\x05\xA3\n62 a 5a3", "62a00", "b\n"},
        {{0}, "\n 0 0 0 0", "0000", ""},
    };
    mStatus = 1;
    std::ofstream("/opt/norvik/starttime.log") << "bq\n"; // cut by a full disk
    mTimeStamp[0] = 0xEE;
    getStartTime();
    EXPECT_EQ(mTimeStamp[0], 0xEE);
    for (const auto& row : rows) {
        bmc->answer(0x0A, 0x48, row.answer);
        setStartTime();
        EXPECT_EQ(fileText("/opt/norvik/starttime.log"), row.file);
        std::fill(std::begin(mTimeStamp), std::end(mTimeStamp), BYTE{0xEE});
        getStartTime();
        getVYNInfo();
        EXPECT_EQ(bmc->uploads().back().value, "1.7.0;220503;0x01;1;" + row.uploaded + ";");
        const std::string log = fileText("/opt/norvik/vyn.log");
        const std::string line = "VYN info ->  1.7.0;220503;0x01;1;" + row.logged + ";\n";
        EXPECT_EQ(log.substr(log.size() - std::min(log.size(), line.size())), line);
    }
    std::remove("/opt/norvik/starttime.log");
    getStartTime();
    EXPECT_EQ(mTimeStamp[0], 0) << "a missing file leaves the previous time";
}

TEST_F(Uploads, OnlyTheReservingThreadReachesTheBmc) {
    reserveUploads();
    std::thread([] {
        ipmiCmdSet(PARM_OS_NAME, "late");
        const BYTE chunk[] = {PARM_TIME_STAMP, 0x10, 0, 0, 0, 0, 0};
        EXPECT_EQ(sendChunk(chunk, sizeof chunk), 0);
    }).join();
    ipmiCmdSet(PARM_OS_NAME, std::string_view("a;\0b;", 5));
    EXPECT_EQ(bmc->uploads(), (std::vector<FakeBmc::Upload>{{192, -1, "a;"}}));
}

} // namespace
