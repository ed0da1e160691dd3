#include "host/cpu_memory.h"
#include "host/network_usage.h"
#include "network_host.h"

#include <atomic>
#include <chrono>
#include <set>
#include <thread>

namespace {

class NetworkUse : public NetworkHost {
  protected:
    // em0 has received `bytes` and sent 1; em1 is down; lo0 has the lowest row.
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
        {"10Gbase-T", {"0", "671088640"}, "25.00"},
        {"40Gbase-SR4", {"7", "5368709127"}, "50.00"},
        {"1000baseT", {"0", "131072000", "131072000", "262144000"}, "50.00"},
        {"1000baseT", {"0", "2621440"}, "1.00"},
        // The difference of a counter that was reset is its 64-bit complement.
        {"1000baseT", {"1000", "0"}, "7036874522624.00"},
        {"HomePNA", {"5", "0", "5", "0"}, "7036874417766400.00"},
        {"none", {"0", "1000"}, "unknown media type"},
    };
    for (const auto& test : cases) {
        bmc.forget();
        medium(test.word);
        for (std::size_t i = 0; i < test.bytes.size(); ++i) {
            received(test.bytes[i]);
            const bool last = i + 1 == test.bytes.size();
            const std::string out = printed([last] { getNetworkUsage(last); });
            EXPECT_EQ(out.empty(), !last);
        }
        const Texts expected{std::string("em0:") + test.use + ":up;" + test.bytes.back() +
                                 ";2;1;4;",
                             "em1:0:down;0;0;0;0;"};
        EXPECT_EQ(values(201), expected) << test.word << " " << test.bytes.back();
        EXPECT_EQ(values(200), Texts{std::string("\2\0", 2)});
        EXPECT_EQ(network_head, nullptr);
    }
}

TEST_F(NetworkUse, ReportsThirtyTwoInterfacesOrNone) {
    std::string rows;
    for (int i = 1; i <= 40; ++i)
        rows += std::to_string(i) + " if" + std::to_string(i) + " 8802 - 1 0 1 0\n";
    host.file("interfaces.txt", rows);
    EXPECT_EQ(printed([] { getNetworkUsage(1); }).find("Network Usage items 032\n"), 0U);
    EXPECT_EQ(values(201).size(), 32U);
    bmc.forget();
    getNetworkUsage(0);
    host.remove("interfaces.txt");
    EXPECT_EQ(printed([] { getNetworkUsage(1); }), "Network Usage items 00\n");
    EXPECT_TRUE(bmc.uploads().empty());
    EXPECT_EQ(network_head, nullptr);
}

// One thread samples while the other samples and uploads; neither waits for the other's tools or
// for the BMC.
TEST_F(NetworkUse, SamplesWhileTheOtherThreadUploads) {
    host.tool("sysctl", "echo hw.physmem: 1024");
    host.tool("top", "echo 'Mem: 1K Active, 0 Inact, 1K Wired, 0K Buf, 1K Free'");
    medium("1000baseT");
    received("0");
    std::atomic<bool> done{false}, sampled{false};
    std::atomic<int> passed{0};
    // The BMC holds the first upload of each kind back until the other thread has sampled.
    std::set<int> held;
    bmc.handle(0x06, 0x58, [&](const FakeBmc::Request& request) {
        if (held.insert(request.data[0]).second) {
            sampled = false;
            const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
            while (!sampled && std::chrono::steady_clock::now() < end)
                std::this_thread::yield();
            passed += sampled;
        }
        return Bytes{0};
    });
    int samples = 0;
    testing::internal::CaptureStdout();
    std::thread sampler([&] {
        for (; !done || samples < 3; ++samples) {
            getMemoryUsage(0);
            getNetworkUsage(0);
            sampled = true;
        }
    });
    for (int cycle = 0; cycle < 5; ++cycle) {
        getMemoryUsage(1);
        getNetworkUsage(1);
    }
    done = true;
    sampler.join();
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(passed, 3); // selectors 197, 200 and 201
    EXPECT_EQ(values(197), Texts(5, "0;"));
    EXPECT_EQ(values(201).size(), 10U);
}

} // namespace
