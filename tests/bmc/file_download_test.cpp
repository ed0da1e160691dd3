#include "bmc/file_download.h"

#include "bmc_test.h"

#include <algorithm>

namespace {

using std::literals::string_literals::operator""s;

Bytes operator+(Bytes bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
    return bytes;
}

// A file that the BMC offers, and what it does wrong.
struct offered_file {
    Bytes bytes;
    std::uint32_t length = 0; // told in the status; 0: the true one
    int failing_step = 0;     // first data byte of the request that is refused
    std::size_t longest_read = 200;

    Bytes answer(const Bytes& request) const {
        if (request.at(0) == failing_step)
            return {0xC1, 0, 0, 0, 0, 0};
        if (request.at(0) == 0x06)
            return status();
        return request.at(0) == 0x07 ? read(request) : Bytes{0x00, 0xA0, 0xAA};
    }
    Bytes status() const {
        Bytes response{0x00, 0x00};
        const auto told = length != 0 ? length : static_cast<std::uint32_t>(bytes.size());
        bmcsim::appendLittleEndian(response, told, 4);
        return response;
    }
    Bytes read(const Bytes& request) const {
        const auto from = std::min<std::size_t>(bmcsim::littleEndian(request, 3, 4), bytes.size());
        const auto size = std::min<std::size_t>(
            {bmcsim::littleEndian(request, 7, 2), bytes.size() - from, longest_read});
        const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(from);
        return Bytes{0x00} + Bytes(begin, begin + static_cast<std::ptrdiff_t>(size));
    }
};

Bytes driveMap(unsigned count) {
    Bytes head(16, 0xEE);
    head[7] = static_cast<std::uint8_t>(count);
    head[8] = static_cast<std::uint8_t>(count >> 8);
    return head;
}

Bytes drive(const std::string& serial, unsigned slot) {
    Bytes record(108, 0);
    record[0] = 0x55;
    record[28] = static_cast<std::uint8_t>(slot);
    record[29] = static_cast<std::uint8_t>(slot >> 8);
    std::copy(serial.begin(), serial.end(), record.begin() + 75);
    return record;
}

Bytes cut(Bytes bytes, std::size_t size) {
    bytes.resize(size);
    return bytes;
}

Bytes capability(std::size_t size, std::uint8_t last) {
    Bytes file(size, 0);
    file.back() = last;
    return file;
}

class DownloadTest : public BmcTest {
  protected:
    void offer(offered_file file) {
        bmc->forget();
        bmc->handle(0x30, 0xA0, [file](const auto& request) { return file.answer(request.data); });
    }
    std::vector<Bytes> sent() const {
        return bmc->sent(0x30, 0xA0);
    }
};

TEST_F(DownloadTest, CapabilityFileOfAnySize) {
    struct {
        offered_file file;
        std::uint8_t count; // asked for
        int supported;
    } const cases[] = {
        {{capability(20, 0xFF)}, 20, 0},
        {{capability(27, 0xFF)}, 27, 0},
        {{capability(28, 0x04)}, 28, 1},
        {{capability(28, 0xFB)}, 28, 0},
        {{capability(28, 0xFF) + Bytes(100, 0)}, 32, 1},
        {{capability(27, 0xFF), 40}, 32, 0}, // the answer is shorter than the file says
    };
    for (const auto& c : cases) {
        offer(c.file);
        EXPECT_EQ(isSupportedNVMe(), c.supported) << c.file.bytes.size();
        EXPECT_EQ(sent(), (std::vector<Bytes>{{0x05, 0x09},
                                              {0x06, 0xA0, 0xAA},
                                              {0x07, 0xA0, 0xAA, 0, 0, 0, 0, c.count, 0},
                                              {0x08, 0xA0, 0xAA}}));
    }
    EXPECT_TRUE(datedLog("err").empty());
}

TEST_F(DownloadTest, ARefusalAtAnyStepEndsTheTransfer) {
    const std::map<int, std::string> lines = {{0x05, "prepare file download fail"},
                                              {0x06, "prepare file download done fail"},
                                              {0x07, "file download fail"},
                                              {0x08, "file download done fail"}};
    for (const auto& [step, line] : lines) {
        offer({capability(28, 0x04), 0, step});
        EXPECT_EQ(isSupportedNVMe(), 0);
        EXPECT_EQ(datedLog("err").back(), "isSupportedNVMe ->  " + line);
        EXPECT_EQ(sent().back().at(0), step);
        offer({driveMap(1) + drive("S1", 1), 0, step});
        EXPECT_EQ(isSupportedSaveBiosHdd(), 0);
        EXPECT_EQ(datedLog("err").back(), "isSupportedSaveBiosHdd ->  " + line);
        EXPECT_EQ(sent().back().at(0), step);
    }
    EXPECT_EQ(fileText("/opt/norvik/vyn.hdd.ini"), "Hdd count,1\nS1,1\n");
}

TEST_F(DownloadTest, DriveMaps) {
    const std::string serial21 = "ABCDEFGHIJKLMNOPQRSTU";
    struct {
        const char* name;
        offered_file file;
        std::string map, error;
        unsigned reads;
    } const cases[] = {
        {"blanks, zero low byte",
         {driveMap(2) + drive("  WX 1  ", 0x0100) + drive(serial21, 0x0105)},
         "Hdd count,2\nWX 1,0\n" + serial21 + ",261\n",
         "",
         9},
        {"a serial of five characters does not run on, one read past the last drive",
         {driveMap(1) + drive("ABCDE\0GHI"s, 1) + drive("B", 2)},
         "Hdd count,1\nABCDE,1\n",
         "",
         6},
        {"ends in a record", {cut(driveMap(300) + drive("A", 1), 76)}, "Hdd count,300\n", "", 4},
        {"4 GiB told", {driveMap(2) + drive("A", 1), 0xFFFFFFFF}, "Hdd count,2\nA,1\n,0\n", "", 10},
        {"short reads", {driveMap(1) + drive("A", 1), 0, 0, 16}, "Hdd count,1\n,1\n", "", 5},
        {"count 0", {driveMap(0) + drive("A", 1)}, "Hdd count,0\n", "hdd count 0", 1},
        {"short head", {cut(driveMap(1), 15)}, "untouched", "read head fail", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::ofstream("/opt/norvik/vyn.hdd.ini") << "untouched";
        offer(c.file);
        const bool done = c.error.empty();
        EXPECT_EQ(isSupportedSaveBiosHdd(), done ? 1 : 0);
        EXPECT_EQ(fileText("/opt/norvik/vyn.hdd.ini"), c.map);
        const auto errors = datedLog("err");
        EXPECT_EQ(errors.empty() ? "" : errors.back(),
                  done ? "" : "isSupportedSaveBiosHdd ->  " + c.error);
        EXPECT_EQ(sent().back().at(0), done ? 0x08 : 0x07);
        EXPECT_EQ(sent().size(), 2 + c.reads + (done ? 1 : 0));
    }
}

} // namespace
