#include "fake_bmc.h"
#include "nvme/device.h"
#include "nvme/locate.h"
#include "nvme/smart.h"
#include "recorded_host.h"
#include "sandbox.h"
#include "state/flags.h"
#include "text.h"
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
    const recorded_host host;
    addDevice(host, "nvme0", "S1");
    const std::string long_name = "nvme" + std::string(60, '7');
    const std::pair<std::string, int> cases[] = {
        {"nvme0", 0}, {"xnvme0", EINVAL}, {"nvme9", ENOENT}, {long_name, ENAMETOOLONG}};
    for (const auto& [name, result] : cases) {
        int fd = -1;
        EXPECT_EQ(result, open_dev(name.c_str(), fd, 0, 0)) << name;
        EXPECT_EQ(result == 0, fd >= 0) << name;
    }
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

TEST(Nvme, FieldsAreCut) {
    const std::string page(512, '\xFF');
    nvme_smart_log_norvik log{};
    print_log_health(reinterpret_cast<const std::uint8_t*>(page.data()), 512, log);
    copyText(log.mn, std::string(40, 'm'));
    const std::string record = nvmeRecord(log);
    EXPECT_EQ(
        record.find("00:;01:255;02:65261.85 ;03:255%;04:255%;05:255%;06:9223372036854775807;"), 0U);
    EXPECT_EQ(record.size(), NVME_RECORD_SIZE);
}

// A drive of the backplane: what the BMC answers after completion code and six bytes.
struct position {
    std::uint8_t aoc, group, slot;
    std::string serial;
};

Bytes answerQuery(const Bytes& query, const std::vector<position>& drives) {
    Bytes answer(27, 0);
    for (const position& drive : drives)
        if (query[2] == drive.aoc && query[5] == drive.group && query[3] == drive.slot) {
            answer.resize(7);
            answer.insert(answer.end(), drive.serial.begin(), drive.serial.end());
        }
    return answer;
}

TEST(Nvme, Locate) {
    const struct {
        const char* device;
        std::vector<position> drives;
        std::size_t queries;
        Bytes locate;
    } cases[] = {
        {"VY10NX0K123456",
         {{0, 2, 4, "VY10NX0K123457"}, {0, 2, 5, "VY10NX0K123456      "}},
         54,
         {0x6C, 0x01, 0, 5, 1, 2}},
        {"VY1", {{1, 7, 23, "VY1"}}, 384, {0x6C, 0x01, 1, 23, 1, 7}},
        // The letter O for the digit, in the fourth place only, on either side.
        {"S3EVNO0K123456", {{0, 0, 1, "S3EVN00K123456"}}, 384, {}},
        {"S3EONX0K123456", {{0, 0, 1, "S3E0NX0K123456"}}, 2, {0x6C, 0x01, 0, 1, 1, 0}},
        // Once replaced, the device's stays so.
        {"VY1O77",
         {{0, 0, 0, "S123N9"}, {0, 0, 1, "VY1O77"}, {0, 0, 2, "VY1077"}},
         3,
         {0x6C, 0x01, 0, 2, 1, 0}},
        // Answers that end before or inside the serial number, and one that goes on.
        {"VY10NX0K123456789012",
         {{0, 0, 0, ""}, {0, 0, 1, "VY10N"}, {0, 0, 2, "S"}, {0, 0, 3, "VY10NX0K123456789012345"}},
         4,
         {0x6C, 0x01, 0, 3, 1, 0}},
    };
    const recorded_host host;
    FakeBmc bmc;
    for (const auto& c : cases) {
        addDevice(host, "nvme3", c.device);
        bmc.forget();
        bmc.handle(0x30, 0x70, [&](const FakeBmc::Request& request) {
            return request.data.size() == 8 ? answerQuery(request.data, c.drives) : Bytes{0xC1};
        });
        EXPECT_EQ(0, locateManage(1, "nvme3")) << c.device;
        std::vector<Bytes> sent = bmc.sent(0x30, 0x70);
        if (!c.locate.empty()) {
            EXPECT_EQ(c.locate, sent.back());
            sent.pop_back();
        }
        EXPECT_EQ(c.queries, sent.size()) << c.device;
    }
    EXPECT_EXIT(locateManage(0, "nvme7"), testing::ExitedWithCode(1), "could not open /dev/nvme7");
}

} // namespace
