#include "bmc/file_download.h"

#include "bmc_test.h"
#include "simulator/oem.h"

namespace {

using bmcsim::driveMapFile;
using std::literals::string_literals::operator""s;

Bytes cut(Bytes bytes, std::size_t size) {
    bytes.resize(size);
    return bytes;
}

class DownloadTest : public BmcTest {
  protected:
    // Offers a file, of which a length may be told that is not the true one.
    void offer(std::uint8_t id, const Bytes& content, std::int64_t told) {
        bmc->forget();
        files.offered[id] = {content, told, 0};
        bmc->handle(0x30, 0xA0, [this](const auto& request) {
            return fileCommand(files, ledger, request.data);
        });
    }

    bmcsim::Files files;
    bmcsim::Ledger ledger;
};

TEST_F(DownloadTest, CapabilityFileOfAnySize) {
    struct {
        std::size_t size;
        std::uint8_t byte27;
        std::int64_t told;
        std::uint8_t count; // asked for
        int supported;
    } const cases[] = {{20, 0, -1, 20, 0},    {27, 0, -1, 27, 0},     {28, 0x04, -1, 28, 1},
                       {28, 0xFB, -1, 28, 0}, {128, 0x04, -1, 32, 1}, {27, 0, 40, 32, 0}};
    for (const auto& c : cases) {
        Bytes file(std::max<std::size_t>(c.size, 28), 0xFF);
        file[27] = c.byte27;
        offer(0x09, cut(file, c.size), c.told);
        EXPECT_EQ(isSupportedNVMe(), c.supported) << c.size;
        const auto sent = bmc->sent(0x30, 0xA0);
        EXPECT_EQ(Bytes(sent.at(2).begin() + 3, sent[2].end()), Bytes({0, 0, 0, 0, c.count, 0}));
    }
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
        unsigned requests;
    } const cases[] = {
        {"blanks, zero low byte", driveMapFile({{"  WX 1  ", 0x0100}, {serial21, 0x0105}}), -1,
         "Hdd count,2\nWX 1,0\n" + serial21 + ",261\n", "", 12},
        {"a zero in the first piece; one read past the last drive", one_of_two, -1,
         "Hdd count,1\nABCDE,1\n", "", 9},
        {"ends in a record", cut(driveMapFile({{"A", 1}}), 76), -1, "Hdd count,1\n", "", 7},
        {"4 GiB told", cut(driveMapFile({{"A", 1}, {"B", 2}}), 124), 0xFFFFFFFF,
         "Hdd count,2\nA,1\n", "file download fail", 8},
        {"count 0", driveMapFile({}), -1, "Hdd count,0\n", "hdd count 0", 3},
        {"short head", cut(driveMapFile({{"A", 1}}), 15), -1, "untouched", "read head fail", 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::ofstream("/opt/norvik/vyn.hdd.ini") << "untouched";
        offer(0x0B, c.file, c.told);
        EXPECT_EQ(isSupportedSaveBiosHdd(), c.error.empty() ? 1 : 0);
        EXPECT_EQ(fileText("/opt/norvik/vyn.hdd.ini"), c.map);
        const auto errors = datedLog("err");
        EXPECT_EQ(errors.empty() ? "" : errors.back(),
                  c.error.empty() ? "" : "isSupportedSaveBiosHdd ->  " + c.error);
        EXPECT_EQ(bmc->sent(0x30, 0xA0).size(), c.requests);
    }
}

} // namespace
