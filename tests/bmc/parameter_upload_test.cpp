#include "bmc/clear.h"
#include "bmc/parameter_upload.h"
#include "bmc/start_time.h"
#include "bmc/time_stamp.h"
#include "fake_bmc.h"
#include "sandbox.h"
#include "smipmi.h"

#include <gtest/gtest.h>

namespace {

std::vector<Bytes> chunks(const FakeBmc& bmc) {
    return bmc.sent(NETFN_APP, CMD_SET_SYSTEM_INFO_PARAMS);
}

} // namespace

TEST(Upload, ValuesAreCutInto32ByteChunksInBase255) {
    FakeBmc bmc;
    ipmiCmdSet(PARM_LAN, std::string(300, 'x'));
    const auto sent = chunks(bmc);
    ASSERT_EQ(sent.size(), 10u);
    const auto wanted = [](Bytes head, std::size_t size) {
        head.resize(head.size() + size, 'x');
        return head;
    };
    EXPECT_EQ(sent[0], wanted({195, 0x10, 45, 1, 0, 0, 32}, 32));
    EXPECT_EQ(sent[8], wanted({195, 0x10, 45, 1, 1, 1, 32}, 32));
    EXPECT_EQ(sent[9], wanted({195, 0x10, 45, 1, 33, 1, 12}, 12));
}

TEST(Upload, ShortValuesIndexBytesAndCounts) {
    const struct {
        BYTE parm;
        std::string_view value;
        std::vector<Bytes> sent;
    } rows[] = {
        {192, "", {{192, 0x10, 0, 0, 0, 0, 0}}},
        {192, "ab", {{192, 0x10, 2, 0, 0, 0, 2, 'a', 'b'}}},
        {192, std::string_view("a\0b", 3), {{192, 0x10, 1, 0, 0, 0, 1, 'a'}}},
        {207, "12;", {{207, 0x10, 2, 0, 0, 0, 2, 1, '2', ';'}}},
        {207, "", {{207, 0x10, 0, 0, 0, 0, 0, 255}}},
        {208, "0", {{208, 0x10, 0, 0, 0, 0, 0, 0}}},
        {208, "/", {{208, 0x10, 0, 0, 0, 0, 0, 255}}},
    };
    FakeBmc bmc;
    for (const auto& row : rows) {
        bmc.forget();
        ipmiCmdSet(row.parm, row.value);
        EXPECT_EQ(chunks(bmc), row.sent) << int{row.parm} << " " << row.value;
    }
    bmc.forget();
    ipmiCmdSet(PARM_COMMAND_RESULT, "3" + std::string(33, 'y'));
    ASSERT_EQ(chunks(bmc).size(), 2u);
    EXPECT_EQ(chunks(bmc)[0].size(), 40u);
    EXPECT_EQ(chunks(bmc)[1], (Bytes{208, 0x10, 33, 0, 32, 0, 1, 3, 'y'}));
}

TEST(Upload, ClearBlanksThirteenParametersInOrder) {
    FakeBmc bmc;
    EXPECT_EQ(clearData(), 0);
    const std::string zero(2, '\0');
    const std::vector<FakeBmc::Upload> expected{
        {192, -1, ""},   {193, -1, ""},   {194, -1, zero}, {196, -1, ""}, {197, -1, ""},
        {198, -1, zero}, {205, -1, zero}, {200, -1, zero}, {203, -1, ""}, {204, -1, ""},
        {207, 255, ""},  {208, 255, ""},  {202, -1, ""}};
    EXPECT_EQ(bmc.uploads(), expected);
}

TEST(Upload, OnlyTheReservingThreadReachesTheBmc) {
    FakeBmc bmc;
    reserveUploads();
    std::thread([] {
        ipmiCmdSet(PARM_OS_NAME, "late");
        const BYTE chunk[] = {PARM_TIME_STAMP, 0x10, 0, 0, 0, 0, 0};
        EXPECT_EQ(sendChunk(chunk, sizeof chunk), 0);
    }).join();
    ipmiCmdSet(PARM_OS_NAME, "");
    EXPECT_EQ(chunks(bmc).size(), 1u);
}

// Start time bytes, what the file then holds, and what a later process reads back and uploads.
TEST(AgentInformation, TheStartTimeTravelsThroughItsFile) {
    if (!enterSandbox())
        GTEST_SKIP() << SANDBOX_DENIED;
    const struct {
        Bytes clock;
        std::string file;
        std::string logged;
        std::string uploaded;
    } rows[] = {
        {{0x62, 0x71, 0x05, 0xA3}, "bq\x05\xA3\n6271 5a3", "62715a3", "bq\x05\xA3"},
        {{0x5F, 0x3A, 0x0B, 0x01}, "_:\x0B\x01\n5f3a b 1", "5f3ab1", "_:\x0B\x01"},
        {{0x62, 0x71, 0x00, 0xA3}, "bq\n6271 0a3", "627100", "bq"},
        {{0x62, 0x0A, 0x05, 0xA3}, "b\n\x05\xA3\n62 a 5a3", "62a00", "b\n"},
        {{0x00, 0x71, 0x05, 0xA3}, "\n 071 5a3", "0000", ""},
        {{}, "\n 0 0 0 0", "0000", ""},
    };
    FakeBmc bmc;
    mStatus = 1;
    for (const auto& row : rows) {
        Bytes response(1 + row.clock.size());
        std::copy(row.clock.begin(), row.clock.end(), response.begin() + 1);
        bmc.answer(NETFN_STORAGE, CMD_GET_SEL_TIME, response);
        bmc.forget();
        setStartTime();
        EXPECT_EQ(fileText("/opt/norvik/starttime.log"), row.file);
        std::fill(std::begin(mTimeStamp), std::end(mTimeStamp), BYTE{0xEE});
        getStartTime();
        getVYNInfo();
        EXPECT_EQ(bmc.uploads().back().value, "1.7.0;220503;0x01;1;" + row.uploaded + ";");
        const std::string log = fileText("/opt/norvik/vyn.log");
        const std::string line = "VYN info ->  1.7.0;220503;0x01;1;" + row.logged + ";\n";
        EXPECT_EQ(log.substr(log.size() - std::min(log.size(), line.size())), line);
    }
    std::remove("/opt/norvik/starttime.log");
    getStartTime();
    EXPECT_EQ(mTimeStamp[0], 0) << "a missing file leaves the previous time";
}

TEST(AgentInformation, TheTimeStampBeginsTheMainLogAnew) {
    if (!enterSandbox())
        GTEST_SKIP() << SANDBOX_DENIED;
    FakeBmc bmc;
    bmc.answer(NETFN_STORAGE, CMD_GET_SEL_TIME, {0x00, 0x0A, 0x00, 0xFF, 0x61, 0x99});
    printTimeStamp();
    EXPECT_EQ(chunks(bmc), (std::vector<Bytes>{{202, 16, 4, 0, 0, 0, 4, 0x0A, 0x00, 0xFF, 0x61}}));
    const std::string log = fileText("/opt/norvik/vyn.log");
    EXPECT_EQ(log.rfind("Time stamp -> 20", 0), 0u);
    EXPECT_EQ(log.substr(log.find('\n') + 1),
              "SEL Time stamp 1 ->  a\nSEL Time stamp 2 ->  0\nSEL Time stamp 3 ->  ff\n"
              "SEL Time stamp 4 ->  61\n");
}
