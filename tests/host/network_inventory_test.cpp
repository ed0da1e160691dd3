#include "host/lan_record.h"
#include "host/media_speed.h"
#include "host/network_events.h"
#include "host/network_inventory.h"
#include "network_host.h"
#include "state/flags.h"
#include "text.h"
#include "tools/ifconfig.h"

namespace {

constexpr int SILENT = -static_cast<int>(program_end::not_started),
              CUT = -static_cast<int>(program_end::cut);

class Lan : public NetworkHost {
  protected:
    // From then on `who` answers otherwise: a program with this exit status or so, a file of the
    // kernel's, the BMC events with this code; or events are wanted or not.
    using step = std::tuple<std::string, int, std::string, std::string>; // text; what is told
    template <class Told>
    void follow(const std::vector<step>& steps, Told told) {
        for (const auto& [who, code, text, expected] : steps) {
            if (who == "BMC")
                bmc.answer(0x04, 0x02, {static_cast<BYTE>(code)});
            else if (who == "wanted")
                nicStatusSel = code;
            else if (who.find(".txt") != who.npos)
                host.file(who, text);
            answers[who] = {code < 0 ? static_cast<program_end>(-code) : program_end::exited, code,
                            text};
            asked.clear();
            EXPECT_EQ(told(cycle()), expected) << who << code << text;
        }
    }
    // One cycle; returns the fields of each record by the interface's name.
    std::map<std::string, Texts> cycle() {
        printed(getLan);
        static_first_init = 0;
        std::map<std::string, Texts> records;
        for (const std::string& record : values(195)) {
            const Texts fields = splitFields(record, ";", 99);
            EXPECT_TRUE(fields.size() == 13 && record.size() < 512) << record;
            records[fields[LAN_NAME]] = fields;
        }
        return records;
    }
    // What ifconfig prints for a link with this medium.
    static std::string active(const std::string& medium) {
        return "\tmedia: Ethernet " + medium + "\n\tstatus: active\n";
    }
};

TEST_F(Lan, FillsTwelveFieldsAndSorts) {
    host.file("interfaces.txt", "1 lo0 8049 - 1 0 1 0\n2 em0 8843 02:00:00:00:00:02 1 0 1 0\n"
                                "3 lagg0 8843 - 1 0 1 0\n" // 4 has gone
                                "5 em0.5 8802 02:00:00:00:00:01 1 0 1 0\n");
    host.file("addresses.txt", "lo0 127.0.0.1/8\nem0 192.0.2.7/24\nem0 192.0.2.1/24\n"
                               "em0 fe80::2%em0/64\nem0 198.51.100.1/30\nem0.5 203.0.113.9/0\n");
    says("ifconfig -a",
         block("em0", "\tinet6 fe80::2%em0 prefixlen 64\n" + active("auto (1000baseT <x>)")) +
             block("em0.5", "\tinet6 ::5 prefixlen 64\n\tinet6 2001:db8:: prefixlen 64\n" +
                                active("autoselect (40Gbase-SR4")) +
             block("lagg0", "\tdescription: media, status of inet6\n\tstatus: no carrier\n"));
    says("pciconf -lv", "em0@pci0:0:1:0:\tclass=0x020000 vendor=0x8086 device=0x100e\n"
                        "    vendor     = 'Intel Corporation'\n"
                        "    device     = 'Maker's \"best\" card'\n    class      = network\n"
                        "lagg0@pci0:0:2:0:\tclass=0x020000 card=0x1 chip=0x2\n"
                        "\tdevice = 'X540=2'\nnone0@pci0:0:3:0:\tclass=0x1\n    vendor = 'Y'\n");
    resolv_conf = "search example.org\nnameserver 192.0.2.53\r\n#nameserver\t::1";
    const std::string out = printed(getLan);
    const Texts expected{"3;N/A;lagg0;N/A;N/A;N/A;N/A;host1;N/A;0;X540;down;",
                         "5;02:00:00:00:00:01;em0.5;203.0.113.9;::5,2001:db8::;N/A;0.0.0.0;host1;"
                         "192.0.2.53,::1;40960;N/A;down;",
                         "2;02:00:00:00:00:02;em0;192.0.2.7,192.0.2.1,198.51.100.1;fe80::2%em0;N/A;"
                         "255.255.255.0,255.255.255.252;host1;192.0.2.53,::1;1000;"
                         "Intel Corporation Makers \"best\" card;up;"};
    EXPECT_EQ(values(195), expected);
    EXPECT_EQ(values(194), Texts{std::string("\3\0", 2)});
    EXPECT_EQ(out.rfind("Lan items 03\nLan : (3)" + expected[0] + "\nLan : (5)", 0), 0U) << out;
    EXPECT_EQ(events(), "up 2 ");
    EXPECT_EQ(asked, (Texts{"ifconfig -a", "netstat -4", "netstat -6", "pciconf -lv"}));
    setStopFlag(1);
    EXPECT_EQ(printed(getLan), "");
    setStopFlag(0);
    host.remove("addresses.txt");
    EXPECT_EQ(printed(getLan), "Lan items 00\n");
    EXPECT_EQ(datedLog("err"), Texts{"Get Lan ->  getifaddrs error"});
}

TEST_F(Lan, KeepsItsLimits) {
    std::string rows, addresses,
        told = block("$(a;b)'>x'", active("10Gbase-T") + block("if32", ""));
    for (int i = 1; i <= 40; ++i) {
        const std::string number = std::to_string(100 + i);
        rows +=
            number + (i == 40 ? " $(a;b)'>x'" : " if" + std::to_string(i)) + " 8843 - 1 0 1 0\n";
        addresses += "if32 192.168.100." + number + "/24\n";
        told += "\tinet6 2001:db8:1111:2222:3333:4444:5555:" + number + " prefixlen\n";
    }
    host.file("interfaces.txt", rows);
    host.file("addresses.txt", addresses);
    host.remove("hostname.txt");
    says("hostname hostname", "h\n");
    says("ifconfig -a", told + active("x") + std::string(10000, 'x'));
    auto records = cycle();
    EXPECT_EQ(records.size(), 31U);
    EXPECT_EQ(records["$(ab)'>x'"][LAN_SPEED], "10240"); // what would end the field is left out
    // What does not fit of the longer list is left out, address by address; then texts are cut.
    EXPECT_EQ(records["if32"][LAN_IPV4].size(), 14 * 16 - 1U);
    EXPECT_EQ(records["if32"][LAN_IPV6].size(), 6 * 38 - 1U);
    EXPECT_EQ(records["if32"][LAN_HOST] + records["if32"][LAN_LINK], "hup");
    lan_fields fields{"1", "", std::string(300, 'n'), "192.0.2.1", "",
                      "",  "", std::string(300, 'h')};
    EXPECT_EQ(lanRecord(fields).size(), 511U - 3 * 9);
}

TEST_F(Lan, MapsMediaToSpeed) {
    const char* cases = "auto (10Gbase-T <x,y>)=10240|10Gbase-LR <x,y>=10240|10baseT/UTP=10|=0|"
                        "1000baseT <x> (none)=0|auto 100baseTX <x>=100|auto (42Gbase-T <x>)=0|"
                        "auto (100GBase-SR4 <x>)\r=102400|auto (10Gbase-Twinax <x>)=10240|"
                        "auto\t(1000baseTX <x>)=1000|auto (2500Base-T <x>)=2500|auto (HomePNA x)=1|"
                        "auto (25G-AUI <x>)=25600|a\n\t\tmedia 10baseT/UTP\n\tmedia: a 1000baseT=0";
    for (const std::string& each : splitFields(cases, "|", 99)) {
        const Texts halves = splitFields(each, "=", 2);
        const auto told = parseIfconfig(block("em0", active(halves[0])));
        EXPECT_EQ(std::to_string(linkSpeed(told.at("em0").media)), halves[1]) << each;
    }
}

TEST_F(Lan, FindsTheGatewayOfEachInterface) {
    host.file("interfaces.txt", "1 em0 8843 - 1 0 1 0\n2 lagg0.100 8843 - 1 0 1 0\n");
    says("ifconfig -a", block("em0", "\tinet6 fe80::1%em0 x\n\tinet6 2001:db8::5 x\n"));
    const std::vector<Texts> cases{
        // columns, IPv4, IPv6; gateways of em0 and lagg0.100
        {"Netif Expire\n", "default 192.0.2.1 UGS em0 9\ndefault link#2 US lagg0.10\n",
         "default fe80::9%em0 UG em0\n", "192.0.2.1 link#2"},
        {"Refs Use Netif\n", "default 192.0.2.1 UGS 0 7 lagg0.\n",
         "default fe80::9%em0 UG 0 7 em0 =>\n", "fe80::9%em0 192.0.2.1"},
        {"Nhop# Mtu Netif\n", "192.0.2.0/24 link#1 U 3 1500 em0\n",
         "2001:db8::55 link#7 U 1 1 lo0\n2001:db8::5\tlink#8 U 1\nfe80::1%em0 link#9\n",
         "link#8 N/A"}};
    for (const Texts& test : cases) {
        says("netstat -4", "Internet:\nDestination Gateway Flags " + test[0] + test[1]);
        says("netstat -6", "Internet6:\nDestination Gateway Flags " + test[0] + test[2]);
        auto records = cycle();
        EXPECT_EQ(records["em0"][LAN_GATEWAY] + " " + records["lagg0.100"][LAN_GATEWAY], test[3]);
    }
}

TEST_F(Lan, TakesNotKnowingForNoNews) {
    const std::string up = block("new0", "\tinet6 ::1 x\n" + active("1000baseT"));
    const std::string no_link = block("new0", "\tstatus: x\n"), row = "1 new0 8843 - 1 0 1 0\n";
    const std::string table = "Destination Gateway Netif\ndefault ::9 new0\ndefault";
    const std::vector<step> steps{
        {"interfaces.txt", 0, row, "N/A N/A 0 N/A down 4"}, // never known
        {"ifconfig -a", 0, up, "::1 N/A 1000 N/A up up 1 4"},
        {"netstat -6", CUT, table, "::1 ::9 1000 N/A up 4"}, // but for the unfinished line
        {"netstat -6", SILENT, "", "::1 ::9 1000 N/A up 4"},
        {"pciconf -lv", 0, "new0@\n device = 'A'", "::1 ::9 1000 A up 4"},
        {"pciconf -lv", SILENT, "", "::1 ::9 1000 A up 3"}, // not asked again
        {"ifconfig -a", SILENT, "", "::1 ::9 1000 A up 3"},
        {"ifconfig -a", CUT, no_link, "::1 ::9 1000 A up 3"},
        {"ifconfig -a", 1, no_link, "::1 ::9 1000 A up 3"}, // fails, as it never did
        {"ifconfig -a", 0, "usage:\n\tstatus: no\n", "::1 ::9 1000 A up 3"},
        {"ifconfig -a", 0, block("em9", ""), "::1 ::9 1000 A up 3"}, // new0 is not mentioned
        {"interfaces.txt", 0, "1 new0 8802 - 1 0 1 0", "::1 ::9 1000 A down down 1 3"},
        {"interfaces.txt", 0, row, "::1 ::9 1000 A down 3"},
        {"ifconfig -a", 0, up, "::1 ::9 1000 A up up 1 3"},
        {"interfaces.txt", 0, row + "2 em1 8843 - 1 0 1 0", "::1 ::9 1000 A up 4"}, // other names
        {"ifconfig -a", 0, no_link, "N/A ::9 0 A down down 1 4"}};
    follow(steps, [&](auto records) {
        std::string told;
        for (const lan_field field : {LAN_IPV6, LAN_GATEWAY, LAN_SPEED, LAN_DESCRIPTION, LAN_LINK})
            told += records["new0"][field] + " ";
        return told + events() + std::to_string(asked.size()); // programs asked in the cycle
    });
    EXPECT_EQ(datedLog("err"), Texts(6, "get description ->  command not found"));
}

TEST_F(Lan, TellsLinksUntilTheBmcKnows) {
    const std::string up = "\tstatus: active\n", down = "\tstatus: no carrier\n";
    const std::string row = "1 em0 8843 - 1 0 1 0\n", one = "em0 10.0.0.1/8\n",
                      two = "em0 10.2.2.2/8\n";
    const std::vector<step> steps{
        {"interfaces.txt", 0, row, "N/A down "},
        {"BMC", 0x80, "", "N/A down "},
        {"ifconfig -a", 0, block("em0", up), "N/A down up 1 "},
        {"addresses.txt", 0, one, "N/A down up 1 "}, // taken over when the link is told
        {"BMC", 0, "", "N/A up up 1 "},
        {"addresses.txt", 0, one + two, "10.0.0.1,10.2.2.2 up "},
        {"addresses.txt", 0, two + one, "10.0.0.1,10.2.2.2 up "}, // the same addresses
        {"ifconfig -a", 0, block("em0", down), "10.0.0.1,10.2.2.2 down down 1 "},
        {"interfaces.txt", 0, "2 em2 8843 - 1 0 1 0", "10.0.0.1,10.2.2.2 down "}, // em0 has gone
        {"BMC", 0x81, "", "10.0.0.1,10.2.2.2 down "},
        {"ifconfig -a", 0, block("em0", up) + block("em3", up), "10.0.0.1,10.2.2.2 down "},
        {"interfaces.txt", 0, row + "3 em3 8843 - 1 0 1 0", "10.0.0.1,10.2.2.2 down up 3 up 1 "},
        {"BMC", 0, "", "10.0.0.1,10.2.2.2 up up 3 up 1 "},
        {"wanted", 0, "", "10.0.0.1,10.2.2.2 up "},
        {"ifconfig -a", 0, block("em0", down), "10.0.0.1,10.2.2.2 down "},
        {"wanted", 1, "", "10.0.0.1,10.2.2.2 down "}};
    follow(steps, [&](const auto&) { // what is kept of em0, and the events
        return g_network_head->ipv4 + std::string(" ") + g_network_head->if_link + " " + events();
    });
}

} // namespace
