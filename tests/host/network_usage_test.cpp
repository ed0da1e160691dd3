#include "host/cpu_memory.h"
#include "host/network_usage.h"
#include "network_host.h"
#include "text.h"

#include <atomic>
#include <thread>

namespace {

class NetworkUse : public NetworkHost {
  protected:
    void received(const std::string& bytes) const {
        host.file("interfaces.txt",
                  "1 lo0 8049 - 9 9 9 9\n2 em1 8802 - 5 6 7 8\n4 em0 8843 - " + bytes + " 2 1 4\n");
    }
    static void medium(const std::string& word) {
        says("ifconfig -a", block("em0", "\tmedia: Ethernet autoselect (" + word + " <x>)\n"));
    }
};

TEST_F(NetworkUse, KeepsItsLimits) {
    std::string rows;
    for (int i = 1; i <= 40; ++i)
        rows += std::to_string(i) + " if" + std::to_string(i) + " 8802 - 1 0 1 0\n";
    host.file("interfaces.txt", rows);
    // The records are of the interfaces that were counted, whatever comes and goes meanwhile.
    bmc.handle(0x06, 0x58, [&](const FakeBmc::Request&) { return received("1"), Bytes{0}; });
    EXPECT_EQ(printed([] { getNetworkUsage(1); }).find("Network Usage items 032\n"), 0U);
    EXPECT_EQ(values(201).size(), 32U);
    for (int i = 0; i < 700; ++i)
        getNetworkUsage(0);
    int held = 0;
    for (const network_usage_list* each = network_head; each != nullptr; each = each->next)
        ++held;
    EXPECT_EQ(held, 2 * 600);
    dropNetworkSamples();
    EXPECT_EQ(network_head, nullptr);
}

TEST_F(NetworkUse, SamplesWhileTheOtherThreadUploads) {
    host.file("memory.txt", "1048576 0 1048576");
    medium("1000baseT");
    received("0");
    // An upload that held a guard would wait for ever.
    bmc.handle(0x06, 0x58, [&](const FakeBmc::Request&) {
        getMemoryUsage(0);
        getNetworkUsage(0);
        return Bytes{0};
    });
    std::atomic<bool> done{false};
    std::thread sampler([&] {
        for (int second = 0; !done; ++second) {
            received(std::to_string(second)); // a sample out of its order would be a wrapped use
            getNetworkUsage(0);
        }
    });
    printed([] {
        for (int cycle = 0; cycle < 20; ++cycle) {
            getMemoryUsage(1);
            getNetworkUsage(1);
        }
    });
    done = true;
    sampler.join();
    EXPECT_EQ(values(197), Texts(20, "0;"));
    EXPECT_EQ(values(201).size(), 40U);
    for (const std::string& record : values(201))
        EXPECT_TRUE(record.rfind("em0:<1:up;", 0) == 0 || record == "em1:0:down;0;0;0;0;");
}

} // namespace
