#include "bmc/file_download.h"

#include "bmc_test.h"

#include <algorithm>

namespace {

// A file that the BMC offers, and what it does wrong.
struct offered_file {
    Bytes bytes;
    std::uint64_t length = 0; // told in the status; 0: the true one
    int preparing = 0;        // status answers 0x01 before
    int failing_step = 0;     // first data byte of the request that is refused
    std::uint8_t code = 0xC1;
    std::size_t longest_read = 200;

    Bytes answer(const Bytes& request) {
        if (request.at(0) == failing_step)
            return {code, 0, 0, 0, 0, 0};
        switch (request.at(0)) {
        case 0x05:
            return {0x00, 0xA0, 0xAA};
        case 0x06:
            if (preparing-- > 0)
                return {0x00, 0x01, 0x09, 0x09, 0x09, 0x09};
            return status(length != 0 ? length : bytes.size());
        case 0x07:
            return read(request);
        default:
            return {0x00};
        }
    }

    static Bytes status(std::uint64_t told) {
        Bytes response{0x00, 0x00};
        for (unsigned i = 0; i < 4; i++)
            response.push_back(static_cast<std::uint8_t>(told >> 8 * i));
        return response;
    }

    Bytes read(const Bytes& request) const {
        const std::size_t offset = request.at(3) + 256U * request.at(4) + 65536U * request.at(5);
        const std::size_t count = request.at(7) + 256U * request.at(8);
        const std::size_t from = std::min(offset, bytes.size());
        const std::size_t size = std::min({count, bytes.size() - from, longest_read});
        Bytes response{0x00};
        response.insert(response.end(), bytes.begin() + static_cast<std::ptrdiff_t>(from),
                        bytes.begin() + static_cast<std::ptrdiff_t>(from + size));
        return response;
    }
};

Bytes driveMap(unsigned count) {
    Bytes head(16, 0xEE);
    head[7] = static_cast<std::uint8_t>(count);
    head[8] = static_cast<std::uint8_t>(count >> 8);
    return head;
}

Bytes operator+(Bytes map, const Bytes& record) {
    map.insert(map.end(), record.begin(), record.end());
    return map;
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
        bmc->handle(0x30, 0xA0,
                    [file](const auto& request) mutable { return file.answer(request.data); });
    }
    std::vector<Bytes> sent() const {
        return bmc->sent(0x30, 0xA0);
    }
};

TEST_F(DownloadTest, CapabilityFileOfAnySize) {
    struct {
        Bytes file;
        std::uint8_t count; // asked for
        int supported;
    } const cases[] = {
        {capability(20, 0xFF), 20, 0},
        {capability(27, 0xFF), 27, 0},
        {capability(28, 0x04), 28, 1},
        {capability(28, 0xFB), 28, 0},
        {capability(28, 0xFF) + Bytes(100, 0), 32, 1},
    };
    for (const auto& c : cases) {
        offer({c.file, 0, 2});
        EXPECT_EQ(isSupportedNVMe(), c.supported) << c.file.size();
        EXPECT_EQ(sent(), (std::vector<Bytes>{{0x05, 0x09},
                                              {0x06, 0xA0, 0xAA},
                                              {0x06, 0xA0, 0xAA},
                                              {0x06, 0xA0, 0xAA},
                                              {0x07, 0xA0, 0xAA, 0, 0, 0, 0, c.count, 0},
                                              {0x08, 0xA0, 0xAA}}));
    }
    // The answer is shorter than the file says.
    offer({capability(27, 0xFF), 40});
    EXPECT_EQ(isSupportedNVMe(), 0);
    EXPECT_TRUE(datedLog("err").empty());
}

TEST_F(DownloadTest, ARefusalAtAnyStepEndsTheTransfer) {
    const std::map<int, std::string> lines = {{0x05, "prepare file download fail"},
                                              {0x06, "prepare file download done fail"},
                                              {0x07, "file download fail"},
                                              {0x08, "file download done fail"}};
    for (const std::uint8_t code : Bytes{0x80, 0xC1, 0xFF})
        for (const auto& [step, line] : lines) {
            offer({capability(28, 0x04), 0, 0, step, code});
            EXPECT_EQ(isSupportedNVMe(), 0);
            EXPECT_EQ(datedLog("err").back(), "isSupportedNVMe ->  " + line);
            EXPECT_EQ(sent().back().at(0), step);
            offer({driveMap(1) + drive("S1", 1), 0, 0, step, code});
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
        bool done;
    } const cases[] = {
        {"two drives",
         {driveMap(2) + drive("S1234567890", 3) + drive(serial21, 0x0105)},
         "Hdd count,2\nS1234567890,3\n" + serial21 + ",261\n",
         "",
         9,
         true},
        {"blanks, short serial, slot with a zero low byte",
         {driveMap(2) + drive("  WX 1  ", 0x0100) + drive(std::string("AB\0CDEFGH", 9), 9)},
         "Hdd count,2\nWX 1,0\nAB,9\n",
         "",
         9,
         true},
        {"a serial of five characters does not run on",
         {driveMap(1) + drive(std::string("ABCDE\0GHI", 9), 1)},
         "Hdd count,1\nABCDE,1\n",
         "",
         5,
         true},
        {"one read past the last drive",
         {driveMap(1) + drive("A", 1) + drive("B", 2)},
         "Hdd count,1\nA,1\n",
         "",
         6,
         true},
        {"fewer records than drives",
         {driveMap(300) + drive("A", 1)},
         "Hdd count,300\nA,1\n",
         "",
         5,
         true},
        {"ends in a record", {cut(driveMap(2) + drive("A", 1), 76)}, "Hdd count,2\n", "", 4, true},
        {"4 GiB told",
         {driveMap(2) + drive("A", 1), 0xFFFFFFFF},
         "Hdd count,2\nA,1\n,0\n",
         "",
         10,
         true},
        {"count 0", {driveMap(0) + drive("A", 1)}, "Hdd count,0\n", "hdd count 0", 1, false},
        {"short head", {cut(driveMap(1), 15)}, "untouched", "read head fail", 1, false},
        {"short reads",
         {driveMap(1) + drive("A", 1), 0, 0, 0, 0, 16},
         "Hdd count,1\n,1\n",
         "",
         5,
         true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::ofstream("/opt/norvik/vyn.hdd.ini") << "untouched";
        offer(c.file);
        const std::size_t errors = datedLog("err").size();
        EXPECT_EQ(isSupportedSaveBiosHdd(), c.done ? 1 : 0);
        EXPECT_EQ(fileText("/opt/norvik/vyn.hdd.ini"), c.map);
        EXPECT_EQ(datedLog("err").size(), errors + (c.error.empty() ? 0 : 1));
        if (!c.error.empty()) {
            EXPECT_EQ(datedLog("err").back(), "isSupportedSaveBiosHdd ->  " + c.error);
        }
        EXPECT_EQ(sent().back(), c.done ? Bytes({0x08, 0xA0, 0xAA}) : sent().back());
        EXPECT_EQ(sent().size(), 2 + c.reads + (c.done ? 1 : 0));
    }
}

} // namespace
