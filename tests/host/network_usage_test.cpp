#include "host/cpu_memory.h"
#include "host/network_usage.h"
#include "network_host.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace {

class NetworkUse : public NetworkHost {
  protected:
    void received(const std::string& bytes) const {
        host.file("interfaces.txt",
                  "1 lo0 8049 - 9 9 9 9\n2 em1 8802 - 5 6 7 8\n3 em0 8843 - " + bytes + " 2 1 4\n");
    }
    void medium(const std::string& word) const {
        host.file("ifconfig.em0", "\tmedia: Ethernet autoselect (" + word + " <full-duplex>)\n");
    }
};

TEST_F(NetworkUse, UploadsTheMeanOfTheIntervals) {
    const struct {
        const char* word;
        Texts bytes; // a sample each
        const char* use;
    } cases[] = {
        {"1000baseT", {"0"}, "<1"},
        {"1000baseT", {"0", "131072000"}, "50.00"},
        {"40Gbase-SR4", {"7", "5368709127"}, "50.00"},
        {"1000baseT", {"0", "131072000", "131072000", "262144000"}, "50.00"},
        // The difference of a counter that was reset is its 64-bit complement.
        {"1000baseT", {"1000", "0"}, "7036874522624.00"},
        {"none", {"0", "1000"}, "unknown media type"},
    };
    for (const auto& test : cases) {
        bmc.forget();
        medium(test.word);
        for (std::size_t i = 0; i < test.bytes.size(); ++i) {
            received(test.bytes[i]);
            printed([&] { getNetworkUsage(i + 1 == test.bytes.size()); });
        }
        const Texts expected{std::string("em0:") + test.use + ":up;" + test.bytes.back() +
                                 ";2;1;4;",
                             "em1:0:down;0;0;0;0;"};
        EXPECT_EQ(values(201), expected) << test.word << " " << test.bytes.back();
        EXPECT_EQ(values(200), Texts{std::string("\2\0", 2)});
    }
}

TEST_F(NetworkUse, ReportsThirtyTwoInterfaces) {
    std::string rows;
    for (int i = 1; i <= 40; ++i)
        rows += std::to_string(i) + " if" + std::to_string(i) + " 8802 - 1 0 1 0\n";
    host.file("interfaces.txt", rows);
    EXPECT_EQ(printed([] { getNetworkUsage(1); }).find("Network Usage items 032\n"), 0U);
    EXPECT_EQ(values(201).size(), 32U);
}

TEST_F(NetworkUse, SamplesWhileTheOtherThreadUploads) {
    host.tool("sysctl", "echo hw.physmem: 1024");
    host.tool("top", "echo 'Mem: 1K Active, 0 Inact, 1K Wired, 0K Buf, 1K Free'");
    medium("1000baseT");
    received("0");
    std::atomic<bool> done{false};
    std::atomic<std::size_t> samples{0}, passed{0};
    // The BMC holds each upload back until the other thread has sampled.
    bmc.handle(0x06, 0x58, [&](const FakeBmc::Request&) {
        const std::size_t before = samples;
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (samples == before && std::chrono::steady_clock::now() < end)
            std::this_thread::yield();
        passed += samples != before;
        return Bytes{0};
    });
    testing::internal::CaptureStdout();
    std::thread sampler([&] {
        for (; !done; ++samples) {
            getMemoryUsage(0);
            getNetworkUsage(0);
        }
    });
    for (int cycle = 0; cycle < 3; ++cycle) {
        getMemoryUsage(1);
        getNetworkUsage(1);
    }
    done = true;
    sampler.join();
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(passed, bmc.sent(0x06, 0x58).size());
    EXPECT_EQ(values(197), Texts(3, "0;"));
    EXPECT_EQ(values(201).size(), 6U);
}

} // namespace
