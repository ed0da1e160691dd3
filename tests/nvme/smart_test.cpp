#include "nvme/smart.h"

#include "fake_bmc.h"
#include "nvme_pages.h"
#include "text.h"

#include <gtest/gtest.h>

namespace {

std::string record(const std::string& name, const std::string& warning, const std::string& model,
                   const std::string& serial) {
    return "00:" + name + ";01:" + warning +
           ";02:34.85 C;03:100%;04:10%;05:3%;06:1;07:2;08:3;09:4;10:5;11:6;12:7;13:8;14:9;15:10;"
           "16:" +
           model + ";17:500107608;18:" + serial + ";";
}

TEST(NvmeSmart, Uploads) {
    const recorded_host host;
    FakeBmc bmc;
    const std::string model = "Quarry 7 DC-960 enterprise mixed-use 123";
    addDevice(host, "nvme0");
    addDevice(host, "nvme10", "VY10X0077", model, 4);
    addDevice(host, "nvme2", "\x01\xFF;VY", "", 255);
    const dev_listing listing({"ada0", "nvme", "nvme0", "nvme0ns1", "nvme0ns2", "nvme0p1", "nvme10",
                               "nvme2", "nvme2x", "xnvme3"});
    const std::vector<std::string> records = {
        record("nvme0", "0", "Quarry 960", "VY10X0042"),
        record("nvme10", "4", model.substr(0, 31), "VY10X0077"),
        record("nvme2", "255", "N/A", "??;VY"),
    };
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, getNVMeSMARTInfo());
    std::string printed = "NVME Storage items 03\n";
    std::vector<FakeBmc::Upload> sent = {{205, -1, {"\0\0", 2}}, {205, -1, {"\3\0", 2}}};
    for (const std::string& text : records) {
        printed += "Available NVMe : " + text + "\n";
        sent.push_back({206, -1, text});
    }
    EXPECT_EQ(printed, testing::internal::GetCapturedStdout());
    EXPECT_EQ(sent, bmc.uploads());

    const dev_listing many(std::vector<std::string>(60, "nvme0"));
    bmc.forget();
    getNVMeSMARTInfo();
    EXPECT_EQ(2U + 48U, bmc.uploads().size());
}

TEST(NvmeSmart, RecordOfOddPages) {
    const std::string most = "9223372036854775807";
    std::string edge(512, '\0');
    put(edge, 32, 0x7FFFFFFFFFFFFFFF, 8); // the largest counter told as it is
    put(edge, 48, 0x8000000000000000, 8);
    put(edge, 64 + 8, 1, 8); // the high half alone
    const std::pair<std::string, std::string> cases[] = {
        {edge, "00:;01:0;02:-273.15 C;03:0%;04:0%;05:0%;06:" + most + ";07:" + most +
                   ";08:" + most + ";09:0;"},
        // The temperature is cut to its field.
        {std::string(512, '\xFF'), "00:;01:255;02:65261.85 ;03:255%;04:255%;05:255%;06:" + most},
    };
    for (const auto& [page, start] : cases) {
        nvme_smart_log_norvik log{};
        print_log_health(reinterpret_cast<const std::uint8_t*>(page.data()), 512, log);
        copyText(log.mn, std::string(40, 'm'));
        EXPECT_EQ(start, nvmeRecord(log).substr(0, start.size()));
        EXPECT_EQ(&page == &cases[1].first, nvmeRecord(log).size() == NVME_RECORD_SIZE);
    }
}

} // namespace
