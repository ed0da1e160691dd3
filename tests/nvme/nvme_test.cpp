#include "fake_bmc.h"
#include "nvme/device.h"
#include "nvme/locate.h"
#include "nvme/smart.h"
#include "recorded_host.h"
#include "sandbox.h"
#include "state/flags.h"
#include "tools/program.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace {

void addDevice(const recorded_host& host, const std::string& name, const std::string& serial) {
    host.file("dev/" + name, "");
    host.file(name + "/controller.bin", std::string(4, '\0') + serial);
    for (const char* page : {"/namespace1.bin", "/health.bin"}) // the rest is zero
        host.file(name + page, "");
}

TEST(Nvme, OnlyControllersAreOpened) {
    int fd = -1;
    EXPECT_EQ(EINVAL, open_dev("xnvme0", fd, 0, 0));
    EXPECT_EQ(ENAMETOOLONG, open_dev(("nvme" + std::string(60, '7')).c_str(), fd, 0, 0));
}

// What a failed command costs: a one-shot run, or in the service its own record.
TEST(Nvme, FailedCommands) {
    if (!enterSandbox())
        GTEST_SKIP() << SANDBOX_DENIED;
    tools.list_folder = [](const char*) {
        return std::vector<std::string>{"nvme0", "nvme1", "nvme2"};
    };
    const std::pair<std::string, const char*> cases[] = {
        {"controller.fail", "identify request failed: Input/output error"},
        {"namespace1.status", "identify request returned error"},
        {"health.status", "get log page request returned error"},
    };
    for (const auto& [file, message] : cases) {
        const recorded_host host;
        FakeBmc bmc;
        addDevice(host, "nvme0", "S1");
        addDevice(host, "nvme1", "S2");
        host.file("nvme0/" + file, "5");
        EXPECT_EXIT(getNVMeSMARTInfo(), testing::ExitedWithCode(1), message) << file;
        bmc.forget();
        setStopFlag(0);
        getNVMeSMARTInfo();
        const auto uploads = bmc.uploads();
        ASSERT_EQ(3U, uploads.size());
        EXPECT_EQ(0U, uploads[2].value.find("00:nvme1;"));
        EXPECT_EQ(datedLog("err").back(), "NVME Storage items ->  nvme2 does not answer");
        stop_shm.reset();
    }
}

TEST(Nvme, Locate) {
    const struct {
        const char* device;
        std::vector<std::string> slots; // what the BMC tells of the first, behind six bytes
        int lit;                        // slot, -1: none
    } cases[] = {
        // Answers that end before or inside the serial number, and one that goes on.
        {"VY10NX0K123456789012", {"", "VY10N", "S", "VY10NX0K123456789012345"}, 3},
        {"VY10NX0K123456", {"VY10NX0K123457", "VY10NX0K123456      "}, 1},
        // The letter O for the digit, in the fourth place only, on either side.
        {"S3EVNO0K123456", {"", "S3EVN00K123456"}, -1},
        {"S3EONX0K123456", {"", "S3E0NX0K123456"}, 1},
        // Once replaced, the device's stays so.
        {"VY1O77", {"S123N9", "VY1O77", "VY1077"}, 2},
        // Positions that time out.
        {"VY1O88", {"?", "?", "?", "?", "S", "VY1O88"}, 5},
    };
    const recorded_host host;
    FakeBmc bmc;
    for (const auto& c : cases) {
        addDevice(host, "nvme3", c.device);
        bmc.forget();
        bmc.handle(0x30, 0x70, [&](const FakeBmc::Request& request) {
            const Bytes& query = request.data;
            if (query[1] != 0)
                return Bytes{0xC1};
            Bytes answer(query[2] + query[5] == 0 && query[3] < c.slots.size() ? 7 : 27, 0);
            if (answer.size() == 7 && c.slots[query[3]] == "?")
                return Bytes{0xC3};
            if (answer.size() == 7)
                answer.insert(answer.end(), c.slots[query[3]].begin(), c.slots[query[3]].end());
            return answer;
        });
        locateManage(1, "nvme3");
        const Bytes last = bmc.sent(0x30, 0x70).back();
        EXPECT_EQ(last[1] == 1 ? last[3] : -1, c.lit) << c.device;
    }
    EXPECT_EXIT(locateManage(0, "nvme7"), testing::ExitedWithCode(1), "could not open /dev/nvme7");
}

} // namespace
