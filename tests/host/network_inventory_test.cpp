#include "host/lan_record.h"
#include "host/media_speed.h"
#include "host/network_events.h"
#include "host/network_inventory.h"
#include "network_host.h"
#include "state/flags.h"
#include "text.h"
#include "tools/ifconfig.h"

namespace {

class Lan : public NetworkHost {
  protected:
    // One cycle; returns the fields of each record by the interface's name.
    std::map<std::string, lan_fields> cycle() {
        printed(getLan);
        static_first_init = 0;
        std::map<std::string, lan_fields> records;
        for (const std::string& record : values(195)) {
            const Texts fields = splitFields(record, ";", 99);
            EXPECT_TRUE(fields.size() == 13 && record.size() < 512) << record;
            std::copy_n(fields.begin(), LAN_FIELDS, records[fields.at(LAN_NAME)].begin());
        }
        return records;
    }
    // What ifconfig prints for a link with this medium.
    static std::string active(const std::string& medium) {
        return "\tmedia: Ethernet " + medium + "\n\tstatus: active\n";
    }
};

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
    EXPECT_EQ(joinedList(Texts(20, "198.51.100.111")).size(), 17 * 15 - 1U);
    lan_fields fields{"1", "", ":" + std::string(300, 'n'), "192.0.2.1", "",
                      "",  "", std::string(300, 'h') + ":"};
    EXPECT_EQ(lanRecord(fields).size(), 511U - 3 * (9 + 1)); // a lone ":" is filled too
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

} // namespace
