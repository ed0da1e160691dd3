#include "host/media_speed.h"
#include "host/network_inventory.h"
#include "network_host.h"

#include <unistd.h>

namespace {

class Lan : public NetworkHost {};

// What ifconfig prints for a link with this medium.
std::string active(const std::string& medium) {
    return "\tmedia: Ethernet " + medium + "\n\tstatus: active\n";
}

TEST_F(Lan, FillsTwelveFieldsAndSorts) {
    host.file("interfaces.txt", "1 lo0 8049 - 1 0 1 0\n"
                                "2 em0 8843 02:00:00:00:00:02 1 0 1 0\n"
                                "3 em1 8802 02:00:00:00:00:01 1 0 1 0 # as em0 in its first bytes\n"
                                "4 em0.5 8843 02:00:00:00:00:02 1 0 1 0\n"
                                "5 lagg0 8843 01:ff:00:00:00:00 1 0 1 0\n"
                                "6 tun0 8843 - 1 0 1 0\n");
    host.file("addresses.txt", "lo0 127.0.0.1/8\nem0 192.0.2.7/24\nem0 192.0.2.1/24\n"
                               "em0 fe80::2%em0/64\nem0 198.51.100.1/30\nem0.5 203.0.113.9/0\n");
    host.file("ifconfig.em0", "\tinet 192.0.2.7 netmask 0xffffff00\n\tinet6 fe80::2%em0 prefixlen "
                              "64\n" +
                                  active("autoselect (1000baseT <full-duplex>)"));
    host.file("ifconfig.em1", active("autoselect (none)"));
    host.file("ifconfig.em0.5",
              "\tinet6 fe80::5 prefixlen 64\n\tinet6 2001:db8::5 prefixlen 64\n"
              "\tmedia: Ethernet autoselect (40Gbase-SR4\n\tstatus: no carrier\n");
    host.file("ifconfig.lagg0",
              "\tlaggproto lacp\n\tmedia: Ethernet autoselect\n\tstatus: active\n");
    host.file("pciconf.em0",
              "em0@pci0:2:0:0:\tclass=0x020000 chip=0x10d38086\n"
              "    vendor     = 'Intel Corporation'\n"
              "    device     = 'Maker's \"best\" card'\n    class      = network\n");
    host.file("netstat", "default fe80::1%em1 UG em1\nfe80::%em0/64 link#2 U em0\n"
                         "fe80::2%em0 link#9 UHS lo0\n");
    host.file("resolv.conf", "search example.org\nnameserver 192.0.2.53\nnameserver ::1\n");

    const std::string out = printed([] { EXPECT_EQ(getLan(), 0); });
    const std::string dns = "192.0.2.53,::1";
    const Texts expected{
        "6;N/A;tun0;N/A;N/A;N/A;N/A;host1;N/A;0;N/A;down;",
        "5;01:ff:00:00:00:00;lagg0;N/A;N/A;N/A;N/A;host1;" + dns + ";0;N/A;up;",
        "4;02:00:00:00:00:02;em0.5;203.0.113.9;fe80::5,2001:db8::5;N/A;0.0.0.0;host1;N/A;40960;"
        "N/A;down;",
        "3;02:00:00:00:00:01;em1;N/A;N/A;N/A;N/A;host1;" + dns + ";0;N/A;down;",
        "2;02:00:00:00:00:02;em0;192.0.2.7,192.0.2.1,198.51.100.1;fe80::2%em0;link#9;"
        "255.255.255.0,255.255.255.252;host1;" +
            dns + ";1000;Intel Corporation Makers \"best\" card;up;"};
    EXPECT_EQ(values(195), expected);
    EXPECT_EQ(values(194), Texts{std::string("\5\0", 2)});
    EXPECT_EQ(bmc.uploads().front().selector, 194);
    EXPECT_EQ(out.rfind("Lan items 05\nLan : (6)" + expected[0] + "\nLan : (5)", 0), 0U) << out;
    EXPECT_EQ(bmc.sent(0x04, 0x02).size(), 2U); // em0 and lagg0 are up
    EXPECT_EQ(fileText("/opt/norvik/vyn.log").rfind("Lan items ->  5\nLan ->  (6)6;", 0), 0U);
    EXPECT_EQ(datedLog("com")[0], "add network record   tun0");
}

// Nothing that can be reported: a count of zero, no upload, no change detection.
TEST_F(Lan, EndsTheWalkAtWhatCannotBeRead) {
    const struct {
        const char *interfaces, *addresses; // null: no such file
        std::size_t records;
        Texts errors; // so far
    } cases[] = {
        {"1 lo0 8049 - 1 0 1 0\n", "", 0, {}},
        {"3 em1 8843 - 1 0 1 0\n1 em0 8843 - 1 0 1 0\n", "", 1, {}}, // row 2 has gone
        {nullptr, "", 0, {"Lan ->  command not found"}},
        {"3 em1 8843 - 1 0 1 0\n",
         nullptr,
         0,
         {"Lan ->  command not found", "Get Lan ->  getifaddrs error"}},
    };
    for (const auto& test : cases) {
        host.remove("interfaces.txt");
        host.remove("addresses.txt");
        if (test.interfaces != nullptr)
            host.file("interfaces.txt", test.interfaces);
        if (test.addresses != nullptr)
            host.file("addresses.txt", test.addresses);
        bmc.forget();
        const std::string out = printed([] { getLan(); });
        EXPECT_EQ(out.substr(0, 13), "Lan items 0" + std::to_string(test.records) + "\n");
        EXPECT_EQ(values(194).size(), test.records == 0 ? 0U : 1U);
        EXPECT_EQ(values(195).size(), test.records);
        EXPECT_EQ(datedLog("err"), test.errors);
    }
}

TEST_F(Lan, KeepsItsLimits) {
    std::string rows, addresses, lines;
    for (int i = 1; i <= 40; ++i)
        rows += std::to_string(i) + " if" + std::to_string(i) + " 8843 - 1 0 1 0\n";
    for (int i = 100; i < 200; ++i)
        addresses += "if40 192.168.100." + std::to_string(i) + "/24\n";
    for (int i = 0; i < 3000; ++i)
        lines += "inet6 fe80::1 x\n";
    const std::string wide(1000, 'x');
    host.file("interfaces.txt", rows);
    host.file("addresses.txt", addresses);
    host.file("lines", lines + "media " + wide + "\ndevice=" + wide + "\n");
    for (const char* tool : {"ifconfig", "pciconf", "hostname"})
        host.tool(tool, "exec cat \"$VYN_SIM_HOST/lines\"");
    printed([] { getLan(); });

    const Texts records = values(195);
    ASSERT_EQ(records.size(), 31U);
    EXPECT_EQ(records[30].substr(0, 8), "10;N/A;i"); // the rest of the highest rows stays out
    for (const std::string& record : records)
        EXPECT_EQ(record.size(), 511U);
    // Sixteen addresses with their commas make 255 characters; half an address is none.
    EXPECT_EQ(records[0].find(",192.168.100.115;"), 12U + 239U);
}

// Neither an interface name nor an address is evaluated by a shell.
TEST_F(Lan, TakesNamesAsTheyAre) {
    const Texts names{"uplink.mgmt.001", "a;>x", "a`>x`", "$(>x)", "'>x;'", "a|>x", "-a", "*"};
    std::string rows;
    for (std::size_t i = 0; i < names.size(); ++i)
        rows += std::to_string(names.size() - i) + " " + names[i] + " 8843 - 1 0 1 0\n";
    host.file("interfaces.txt", rows);
    host.tool("ifconfig", "printf '%s\\n' \"$*\" >>\"$VYN_SIM_HOST/seen\"\n"
                          "echo 'inet6 $(>x)`>x`;>x'; echo 'inet6 [\\'; echo 'status: active'");
    ASSERT_EQ(chdir(host.path("").c_str()), 0);
    printed([] { getLan(); });
    ASSERT_EQ(chdir("/"), 0);
    EXPECT_FALSE(std::filesystem::exists(host.path("x")));
    EXPECT_EQ(values(195).size(), names.size());
    const std::string seen = "\n" + host.read("seen");
    for (const std::string& name : names)
        EXPECT_NE(seen.find("\n" + (name == "-a" ? "-- -a" : name) + "\n"), std::string::npos)
            << name;
}

TEST_F(Lan, MapsMediaToSpeed) {
    const std::pair<const char*, int> cases[] = {
        {"autoselect (10Gbase-T <full-duplex,rxpause>)", 10240},
        {"10Gbase-LR <full-duplex,rxpause,txpause>", 0}, // no parenthesis and no fourth word
        {"autoselect 100baseTX (<full-duplex>)", 100},
        {"autoselect 100baseTX <full-duplex>", 100},
        {"manual 2500baseSX", 2500},
        {"autoselect (none)", 0},
        {"autoselect (10baseT/UTP <half-duplex>)", 10},
        {"autoselect (HomePNA <>)", 1},
        {"autoselect (40Gbase-CR4 <full-duplex>)", 40960},
    };
    for (const auto& [media, speed] : cases) {
        host.file("ifconfig.em0", active(media));
        EXPECT_EQ(linkSpeed("em0"), speed) << media;
    }
}

} // namespace
