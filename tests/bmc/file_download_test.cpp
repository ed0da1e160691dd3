#include "bmc/file_download.h"

#include "bmc_test.h"
#include "simulator/oem.h"

namespace {

using bmcsim::driveMapFile;
using std::literals::string_literals::operator""s;

Bytes capability(std::size_t size, std::uint8_t byte27) {
    Bytes file(size, 0xFF);
    if (size > 27)
        file[27] = byte27;
    return file;
}

Bytes cut(Bytes bytes, std::size_t size) {
    bytes.resize(size);
    return bytes;
}

class DownloadTest : public BmcTest {
  protected:
    // Offers a file, of which a length may be told that is not the true one (-1), and refuses the
    // requests of one step, told by their first byte.
    void offer(std::uint8_t id, const Bytes& content, std::int64_t told = -1, int refused = 0) {
        bmc->forget();
        files.offered[id] = {content, told, 0};
        bmc->handle(0x30, 0xA0, [this, refused](const auto& request) {
            return request.data.at(0) == refused ? Bytes{bmcsim::CC_INVALID_COMMAND}
                                                 : fileCommand(files, ledger, request.data);
        });
    }
    std::vector<Bytes> sent() const {
        return bmc->sent(0x30, 0xA0);
    }

    bmcsim::Files files;
    bmcsim::Ledger ledger;
};

TEST_F(DownloadTest, CapabilityFileOfAnySize) {
    struct {
        Bytes file;
        std::int64_t told;
        std::uint8_t count; // asked for
        int supported;
    } const cases[] = {
        {capability(20, 0), -1, 20, 0},     {capability(27, 0), -1, 27, 0},
        {capability(28, 0x04), -1, 28, 1},  {capability(28, 0xFB), -1, 28, 0},
        {capability(128, 0x04), -1, 32, 1}, {capability(27, 0), 40, 32, 0},
    };
    for (const auto& c : cases) {
        offer(0x09, c.file, c.told);
        EXPECT_EQ(isSupportedNVMe(), c.supported) << c.file.size();
        ASSERT_EQ(sent().size(), 4U);
        const Bytes read = sent()[2];
        EXPECT_EQ(Bytes(read.begin() + 3, read.end()), Bytes({0, 0, 0, 0, c.count, 0}));
    }
    EXPECT_TRUE(datedLog("err").empty());
}

TEST_F(DownloadTest, ARefusalAtAnyStepEndsTheTransfer) {
    const std::map<int, std::string> lines = {{0x05, "prepare file download fail"},
                                              {0x06, "prepare file download done fail"},
                                              {0x07, "file download fail"},
                                              {0x08, "file download done fail"}};
    for (const auto& [step, line] : lines) {
        offer(0x09, capability(28, 0x04), -1, step);
        EXPECT_EQ(isSupportedNVMe(), 0);
        EXPECT_EQ(datedLog("err").back(), "isSupportedNVMe ->  " + line);
        EXPECT_EQ(sent().back().at(0), step);
        offer(0x0B, driveMapFile({{"S1", 1}}), -1, step);
        EXPECT_EQ(isSupportedSaveBiosHdd(), 0);
        EXPECT_EQ(datedLog("err").back(), "isSupportedSaveBiosHdd ->  " + line);
        EXPECT_EQ(sent().back().at(0), step);
    }
    EXPECT_EQ(fileText("/opt/norvik/vyn.hdd.ini"), "Hdd count,1\nS1,1\n");
}

TEST_F(DownloadTest, DriveMaps) {
    const std::string serial21 = "ABCDEFGHIJKLMNOPQRSTU";
    Bytes one_of_two = driveMapFile({{"ABCDE\0GHI"s, 1}, {"B", 2}});
    one_of_two[7] = 1;
    struct {
        const char* name;
        Bytes file;
        std::int64_t told;
        std::string map, error;
        unsigned reads;
    } const cases[] = {
        {"blanks, zero low byte", driveMapFile({{"  WX 1  ", 0x0100}, {serial21, 0x0105}}), -1,
         "Hdd count,2\nWX 1,0\n" + serial21 + ",261\n", "", 9},
        {"a zero in the first piece; one read past the last drive", one_of_two, -1,
         "Hdd count,1\nABCDE,1\n", "", 6},
        {"ends in a record", cut(driveMapFile({{"A", 1}}), 76), -1, "Hdd count,1\n", "", 4},
        {"4 GiB told", cut(driveMapFile({{"A", 1}, {"B", 2}}), 124), 0xFFFFFFFF,
         "Hdd count,2\nA,1\n", "file download fail", 6},
        {"count 0", driveMapFile({}), -1, "Hdd count,0\n", "hdd count 0", 1},
        {"short head", cut(driveMapFile({{"A", 1}}), 15), -1, "untouched", "read head fail", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::ofstream("/opt/norvik/vyn.hdd.ini") << "untouched";
        offer(0x0B, c.file, c.told);
        const bool done = c.error.empty();
        EXPECT_EQ(isSupportedSaveBiosHdd(), done ? 1 : 0);
        EXPECT_EQ(fileText("/opt/norvik/vyn.hdd.ini"), c.map);
        const auto errors = datedLog("err");
        EXPECT_EQ(errors.empty() ? "" : errors.back(),
                  done ? "" : "isSupportedSaveBiosHdd ->  " + c.error);
        EXPECT_EQ(sent().size(), 2 + c.reads + (done ? 1 : 0));
    }
}

} // namespace
