// The collectors of the host: amounts and layouts beyond those of an ordinary server.
#include "bmc_test.h"
#include "host/cpu_memory.h"
#include "host/lan_record.h"
#include "host/media_speed.h"
#include "host/network_inventory.h"
#include "host/network_usage.h"
#include "host/os_identity.h"
#include "recorded_host.h"
#include "text.h"
#include "tools/ask.h"
#include "tools/ifconfig.h"

namespace {

class Host : public BmcTest {
  protected:
    void SetUp() override {
        BmcTest::SetUp();
        tools.run = [](const command_line& words, const program_limits&) {
            return answers[words.front() + " " + words.back()]; // missing, unless something is said
        };
        host.file("addresses.txt", "");
    }
    static void says(const std::string& program, const std::string& text) {
        answers[program] = {program_end::exited, 0, text};
    }
    static std::string block(const std::string& name, const std::string& lines) {
        return name + ": flags=8843<UP,BROADCAST> metric 0 mtu 1500\n" + lines;
    }
    Lines values(int selector) const {
        Lines found;
        for (const FakeBmc::Upload& upload : bmc->uploads())
            if (upload.selector == selector)
                found.push_back(upload.value);
        return found;
    }
    // What a cycle of this collector alone prints.
    template <class Call>
    std::string printed(Call call) {
        beginAskingCycle();
        bmc->forget();
        testing::internal::CaptureStdout();
        call();
        return testing::internal::GetCapturedStdout();
    }

    recorded_host host;
    static inline std::map<std::string, program_answer> answers; // by first and last word
};

TEST_F(Host, TellsOddAmountsAndTheSystemInItsFirstLine) {
    const Lines memory[] = {
        {"1 9223372036854775807 1", "-21474836;"}, {"0 0 0", ""}, {"1 x 1", ""}};
    for (const Lines& row : memory) {
        host.file("memory.txt", row[0]); // physical, inactive, free
        EXPECT_EQ(printed([] { getMemoryUsage(1); }),
                  row[1].empty() ? "" : "Memory Usage % : " + row[1] + "\n");
        EXPECT_EQ(values(197), Lines{row[1]}) << row[0];
    }
    const Lines systems[] = {{"10.1-RELEASE amd64\nmore\n", "10.1-RELEASE amd64;"},
                             {std::string(300, 'x') + "\n", std::string(255, 'x')},
                             {"", "n/a"}};
    for (const Lines& row : systems) {
        says("uname -p", row[0]);
        EXPECT_EQ(printed(getOSVersion), "OS version : " + row[1] + "\n");
        EXPECT_EQ(values(193), Lines{row[1]});
    }
    EXPECT_EQ(datedLog("err"),
              (Lines{"Memory Usage ->  command not found", "Memory Usage ->  command not found",
                     "OS version ->  command not found"}));
}

TEST_F(Host, KeepsTheNewestSamplesOnly) {
    host.file("interfaces.txt",
              "1 lo0 8049 - 9 9 9 9\n2 em1 8802 - 5 6 7 8\n4 em0 8843 - 1 2 1 4\n");
    for (int i = 0; i < 699; ++i) { // 99 are too old in the end, 300 of 100 % and 300 of 40 % stay
        if (i % 400 == 0)
            host.file("memory.txt", i == 0 ? "100 0 0" : "10240 0 6144");
        getMemoryUsage(0);
        getNetworkUsage(0);
    }
    int held = 0;
    for (const network_usage_list* each = network_head; each != nullptr; each = each->next)
        ++held;
    EXPECT_EQ(held, 2 * 600);
    EXPECT_EQ(printed([] { getMemoryUsage(1); }), "Memory Usage % : 70;\n");
    getMemoryUsage(0);
    host.remove("memory.txt");
    printed([] { getMemoryUsage(1); }); // nothing of its own: the samples are dropped
    EXPECT_EQ(values(197), Lines{""});
    dropNetworkSamples();
    EXPECT_TRUE(memory_head == nullptr && network_head == nullptr);
}

TEST(LanRecord, IsCutToItsRoom) {
    lan_fields fields{"1", "", ":" + std::string(300, 'n'), "192.0.2.1", "",
                      "",  "", std::string(300, 'h') + ":"};
    EXPECT_EQ(lanRecord(fields).size(), 511U - 3 * (9 + 1)); // a lone ":" is filled too
    fields[LAN_NAME] = "$(a;b)\n'>x'";
    EXPECT_EQ(splitFields(lanRecord(fields), ";", 99)[LAN_NAME], "$(ab)'>x'");
}

TEST_F(Host, MapsMediaToSpeed) {
    const char* cases = "1000baseT <x> (none)=0|auto (42Gbase-T <x>)=0|auto (25G-AUI <x>)=25600|"
                        "auto\t(1000baseTX <x>)=1000|auto (HomePNA x)=1|auto (100GBase-SR4 <x>)\r="
                        "102400|a\n\t\tmedia 10baseT/UTP\n\tmedia: a 1000baseT=0";
    for (const std::string& each : splitFields(cases, "|", 99)) {
        const Lines halves = splitFields(each, "=", 2);
        const auto told = parseIfconfig(block("em0", "\tmedia: Ethernet " + halves[0] + "\n"));
        EXPECT_EQ(std::to_string(linkSpeed(told.at("em0").media)), halves[1]) << each;
    }
}

TEST_F(Host, FindsTheGatewayOfEachInterface) {
    host.file("interfaces.txt", "1 em0 8843 - 1 0 1 0\n2 lagg0.100 8843 - 1 0 1 0\n"
                                "3 vlan100 8843 - 1 0 1 0\n4 vlan1000 8843 - 1 0 1 0\n");
    says("hostname hostname", "h\n"); // the kernel tells no name
    says("ifconfig -a", block("em0", "\tinet6 fe80::1%em0 x\n\tinet6 2001:db8::5 x\n"));
    const std::vector<Lines> cases{
        // columns, IPv4, IPv6; gateways
        {"Netif Expire\n", "default 192.0.2.1 UGS em0 9\ndefault link#2 US lagg0.10\n",
         "default fe80::9%em0 UG em0\n", "192.0.2.1 link#2 N/A N/A"},
        {"Refs Use Netif\n", "default 192.0.2.1 UGS 0 7 lagg0.\n",
         "default fe80::9%em0 UG 0 7 em0 =>\n", "fe80::9%em0 192.0.2.1 N/A N/A"},
        {"Refs Use  Netif\n", "default 192.0.2.1 UGS 0 7 vlan10\n", "", "N/A N/A N/A N/A"},
        {"    Netif Expire\n", "default 192.0.2.1 UGS vlan100\n", "", "N/A N/A 192.0.2.1 N/A"},
        {"Nhop# Mtu Netif\n", "192.0.2.0/24 link#1 U 3 1500 em0\n",
         "2001:db8::55 link#7 U 1 1 lo0\n2001:db8::5\tlink#8 U 1\nfe80::1%em0 link#9\n",
         "link#8 N/A N/A N/A"}};
    for (const Lines& test : cases) {
        says("netstat -4",
             "Internet:\nDestination Gateway Flags " + test[0] + test[1] + "default 198");
        answers["netstat -4"].end = program_end::cut; // a router's table: its beginning counts
        says("netstat -6", "Internet6:\nDestination Gateway Flags " + test[0] + test[2]);
        printed(getLan);
        std::map<std::string, std::string> gateways;
        for (const std::string& record : values(195)) {
            const Lines fields = splitFields(record, ";", 99);
            EXPECT_EQ(fields.at(LAN_HOST), "h");
            gateways[fields.at(LAN_NAME)] = fields.at(LAN_GATEWAY);
        }
        EXPECT_EQ(gateways["em0"] + " " + gateways["lagg0.100"] + " " + gateways["vlan100"] + " " +
                      gateways["vlan1000"],
                  test[3]);
    }
}

} // namespace
