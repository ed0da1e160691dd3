#include "host/cpu_memory.h"
#include "network_host.h"

namespace {

class Usage : public NetworkHost {
  protected:
    Usage() {
        host.tool("sysctl", "echo \"hw.physmem: 1073741824\"");
        host.tool("top", "echo 'last pid: 1'; cat \"$VYN_SIM_HOST/top\"; echo 'Swap: 1024M Total'");
    }
    void memLine(const std::string& items) const {
        host.file("top", "Mem: " + items + "\n");
    }
};

TEST_F(Usage, UploadsTheBusyShareSinceTheCallBefore) {
    const std::pair<const char*, const char*> calls[] = {
        {"1 2 3 4 90\n", "10.00;"}, // since boot
        {"2 2 3 4 92\n", "33.33;"},
        {"2 2 3 x 92\n", "0.00;"}, // unreadable
        {"4294967290 2 3 4 4294967295\n", "50.00;"},
        {"4 2 3 4 9\n", "50.00;"},         // wrapped at 32 bits
        {"2 2 3 4 8999998\n", "-0.00;"},   // a counter was reset
        {"2 2 3 8999993 8\n", "-899998;"}, // cut to its seven characters
    };
    for (const auto& [ticks, text] : calls) {
        host.file("cp_time.txt", ticks);
        bmc.forget();
        const std::string out = printed(getCPUUsage);
        EXPECT_EQ(values(196), Texts{text}) << ticks;
        EXPECT_EQ(out, std::string("CPU Usage % : ") + text + "\n");
    }
}

TEST_F(Usage, MeasuresMemoryByTheLineOfTop) {
    const std::pair<const char*, std::string> cases[] = {
        {"1M Active, 256M Inact, 9M Wired, 9M Buf, 256M Free", "50;"},
        {"1M Active, 128M Inact, 9M Wired, 9M Cache, 9M Buf, 128M Free", "75;"},
        {"1M Active, 128M Inact, 9M Laundry, 9M Wired, 131072K Free", "75;"},
        {"1M Active, 0 Inact, 9M Wired, 9M Buf, 1G Free", "0;"},
        {"1M Active, 9999999999999G Inact, 9M Wired, 9M Buf, 1G Free", "-21474836;"},
        {"1M Active, 256M Inact, 9M Wired, 256M Free", ""},
        {"1M Active, 256M Inact, 9M Wired, 9M Buf, 0 Free", ""}, // no unit
        {"1M Active, $(>x)`>x` Inact, 9M Wired, 9M Buf, ;>x Free", ""},
    };
    for (const auto& [items, text] : cases) {
        memLine(items);
        bmc.forget();
        const std::string out = printed([] { getMemoryUsage(1); });
        EXPECT_EQ(values(197), Texts{text}) << items;
        EXPECT_EQ(out, text.empty() ? "" : "Memory Usage % : " + text + "\n");
    }
    EXPECT_EQ(datedLog("err").size(), 3U);
    EXPECT_FALSE(std::filesystem::exists("x"));
}

TEST_F(Usage, UploadsTheMeanOfAllSamples) {
    for (const int used : {40, 41, 43, 44}) {
        memLine("1K Active, 0 Inact, 1K Wired, 1K Buf, " +
                std::to_string((100 - used) * 1073741824LL / 100 / 1024 - 1) + "K Free");
        const std::string out = printed([used] { getMemoryUsage(used == 44); });
        EXPECT_EQ(out, used == 44 ? "Memory Usage % : 42;\n" : "");
    }
    EXPECT_EQ(values(197), Texts{"42;"});
    getMemoryUsage(0);
    host.file("top", "");
    printed([] { getMemoryUsage(1); }); // nothing of its own: the samples are dropped
    EXPECT_EQ(values(197).back(), "");
    EXPECT_EQ(memory_head, nullptr);
}

} // namespace
