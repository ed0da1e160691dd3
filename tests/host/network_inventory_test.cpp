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
                                "3 em1 8802 02:00:00:00:00:01 1 0 1 0\n"
                                "4 em0.5 8843 02:00:00:00:00:02 1 0 1 0\n"
                                "5 lagg0 8843 01:ff:00:00:00:00 1 0 1 0\n"
                                "6 tun0 8843 - 1 0 1 0\n");
    host.file("addresses.txt", "lo0 127.0.0.1/8\nem0 192.0.2.7/24\nem0 192.0.2.1/24\n"
                               "em0 fe80::2%em0/64\nem0 198.51.100.1/30\nem0.5 203.0.113.9/0\n");
    host.file("ifconfig.em0", "\tinet6 fe80::2%em0 prefixlen 64\n" +
                                  active("autoselect (1000baseT <full-duplex>)"));
    host.file("ifconfig.em1", active("autoselect (none)"));
    host.file("ifconfig.em0.5", "\tinet6 fe80::5 prefixlen 64\n\tinet6 2001:db8::5 prefixlen 64\n"
                                "\tmedia: Ethernet autoselect (40Gbase-SR4\n"
                                "\tstatus: no carrier\n");
    host.file("ifconfig.lagg0", active("autoselect"));
    host.file("pciconf.em0", "    vendor     = 'Intel Corporation'\n"
                             "    device     = 'Maker's \"best\" card'\n");
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
    EXPECT_EQ(out.rfind("Lan items 05\nLan : (6)" + expected[0] + "\nLan : (5)", 0), 0U) << out;
    EXPECT_EQ(bmc.sent(0x04, 0x02).size(), 2U); // em0 and lagg0 are up
}

// Without the list, or without the addresses, nothing is reported; a row that has gone ends the
// walk.
TEST_F(Lan, EndsTheWalkAtWhatCannotBeRead) {
    const auto uploadsOf = [&](const char* rows) {
        host.file("interfaces.txt", rows);
        bmc.forget();
        printed([] { getLan(); });
        return bmc.uploads().size();
    };
    EXPECT_EQ(uploadsOf("1 lo0 8049 - 1 0 1 0\n"), 0U);
    EXPECT_EQ(uploadsOf("3 em1 8843 - 1 0 1 0\n1 em0 8843 - 1 0 1 0\n"), 2U);
    host.remove("addresses.txt");
    EXPECT_EQ(uploadsOf("3 em1 8843 - 1 0 1 0\n"), 0U);
    EXPECT_EQ(datedLog("err"), Texts{"Get Lan ->  getifaddrs error"});
}

TEST_F(Lan, KeepsItsLimits) {
    std::string rows, addresses;
    for (int i = 1; i <= 40; ++i)
        rows += std::to_string(i) + " if" + std::to_string(i) + " 8843 - 1 0 1 0\n";
    for (int i = 100; i < 200; ++i)
        addresses += "if40 192.168.100." + std::to_string(i) + "/24\n";
    host.file("interfaces.txt", rows);
    host.file("addresses.txt", addresses);
    for (const char* tool : {"ifconfig", "pciconf", "hostname"})
        host.tool(tool,
                  "yes inet6 fe80::1 x | head -n 500; printf 'media %01000d\\ndevice=%01000d' 1 1");
    printed([] { getLan(); });

    const Texts records = values(195);
    ASSERT_EQ(records.size(), 31U);
    EXPECT_EQ(records[30].substr(0, 8), "10;N/A;i");
    for (const std::string& record : records)
        EXPECT_EQ(record.size(), 511U);
    // Sixteen addresses with their commas make 255 characters; half an address is none.
    EXPECT_EQ(records[0].find(",192.168.100.115;"), 12U + 239U);
}

TEST_F(Lan, EvaluatesNoName) {
    const Texts names{"uplink.mgmt.001", "a;>x", "a`>x`", "$(>x)", "'>x;'", "a|>x", "-a", "*"};
    std::string rows;
    for (std::size_t i = 0; i < names.size(); ++i)
        rows += std::to_string(names.size() - i) + " " + names[i] + " 8843 - 1 0 1 0\n";
    host.file("interfaces.txt", rows);
    host.tool("ifconfig", "echo \"$*\" >>\"$VYN_SIM_HOST/seen\"; echo 'inet6 $(>x)`>x`;>x'");
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
        {"autoselect 100baseTX <full-duplex>", 100},
        {"autoselect (none)", 0},
        {"autoselect (10baseT/UTP <half-duplex>)", 10},
        {"autoselect (40Gbase-CR4 <full-duplex>)", 40960},
    };
    for (const auto& [media, speed] : cases) {
        host.file("ifconfig.em0", active(media));
        EXPECT_EQ(linkSpeed("em0"), speed) << media;
    }
}

} // namespace
