#include "nvme/locate.h"

#include "fake_bmc.h"
#include "nvme_pages.h"

#include <gtest/gtest.h>

namespace {

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

TEST(NvmeLocate, Search) {
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
