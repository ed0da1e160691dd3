#include "client.h"

#include <gtest/gtest.h>

using namespace bmcsim;

namespace {

TEST(BmcsimFaults, EachKindOnTheWire) {
    const Message request = {0x42, 0x06, 0, 0x01, {}};
    const std::string good = "42 1C 01 00 20 01 03 21 02 06 00 00 00 01 00 00 00 00 00 53 A0";
    const struct {
        const char* fault;
        std::string wire;
        int delayMs;
        bool close;
    } cases[] = {
        {"code C3", "42 1C 01 C3 DE A0", 0, false},
        {"silent", "", 0, false},
        {"late 1500", good, 1500, false},
        {"short 1", "42 1C 01 00 AA B1 A0", 0, false},
        {"short 0", "42 1C 01", 0, false},
        {"long 18", "EE EE", 0, false},
        {"sequence", "97 1C 01 00 20", 0, false},
        {"checksum", "00 54 A0", 0, false},
        {"drop", "", 0, true},
        {"midframe", "42 1C 01 00 20 01 03 21 02 06", 0, true},
        {"double", good + " " + good, 0, false},
        {"attention", "A1 " + good, 0, false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.fault);
        Bench bench;
        ASSERT_EQ(bench.command(std::string("fault 06/01 ") + row.fault + " 1"), "");
        const Wire wire = handleRequest(bench.bmc, bench.session, request);
        EXPECT_EQ(row.wire.empty(), wire.bytes.empty());
        EXPECT_NE(hexText(wire.bytes).find(row.wire), std::string::npos) << hexText(wire.bytes);
        EXPECT_EQ(wire.delayMs, row.delayMs);
        EXPECT_EQ(wire.close, row.close);
        const Wire next = handleRequest(bench.bmc, bench.session, request);
        EXPECT_EQ(hexText(next.bytes), good); // it hit one request only
    }
}

TEST(BmcsimFaults, HitTheirTargetAndTheirCount) {
    Bench bench;
    const auto code = [&](uint8_t selector) {
        return bench.send(0x06, 0x58, {selector, 0x10, 0, 0, 0, 0, 0})[0];
    };
    bench.command("fault 06/58/C0 code C1 2");
    bench.command("fault 0A/48 code D2");
    EXPECT_EQ(code(193), 0x00);
    EXPECT_EQ(code(192), 0xC1);
    EXPECT_EQ(code(192), 0xC1);
    EXPECT_EQ(code(192), 0x00);
    for (int i = 0; i < 5; i++)
        EXPECT_EQ(bench.send(0x0A, 0x48), Bytes{0xD2});
    bench.command("answer 0A/48 00 01");
    bench.command("answer 0A/48 C0");
    EXPECT_EQ(bench.send(0x0A, 0x48), hex("00 01")); // scripted answers go first
    EXPECT_EQ(bench.send(0x0A, 0x48), hex("C0"));
    EXPECT_EQ(bench.send(0x0A, 0x48), Bytes{0xD2});
    bench.command("nofault");
    EXPECT_EQ(bench.send(0x0A, 0x48).size(), 5U);
}

TEST(BmcsimFaults, ARefusedChunkSpoilsItsValueAndNothingElse) {
    Bench bench;
    const std::string value(70, 'v');
    bench.upload(193, "before;");
    bench.command("fault 06/58/C1 code C0 1");
    bench.upload(193, value + ";");
    EXPECT_EQ(bench.command("raw 193"), "before;\n");
    bench.upload(193, value + ";");
    EXPECT_EQ(bench.command("raw 193"), value + ";\n");
    EXPECT_EQ(bench.complaints(), "");
}

TEST(BmcsimControl, WrongCommandsAreErrors) {
    Bench bench;
    for (const char* line : {"bogus",
                             "raw",
                             "raw 256",
                             "raw x",
                             "sel wipe",
                             "trace",
                             "wait",
                             "wait 1",
                             "wait x sel a",
                             "wait 1 bogus",
                             "wait 1 raw 192",
                             "wait 1 selector 192 count 1",
                             "wait 1 show bogus x",
                             "post 1 key",
                             "post 256 key 1",
                             "post 1 key 1 2 3",
                             "postraw 1 XY",
                             "fault",
                             "fault all",
                             "fault 06 silent",
                             "fault 06/58 bogus",
                             "fault 06/58 late",
                             "fault 06/58 code 100",
                             "fault 06/58 silent 0",
                             "fault all silent 1 2",
                             "fault 40/01 silent",
                             "answer 06/58",
                             "answer all G",
                             "delay",
                             "watchdog on",
                             "ipmi 3",
                             "clock -1",
                             "file 0B",
                             "file 0B length 5",
                             "file 0B /no/such/file",
                             "file XY none",
                             "capability maybe",
                             "drivemap serial",
                             "nvme 2 0 0 S",
                             "nvme 0 0 24 S",
                             "show bogus",
                             "requests x"})
        EXPECT_EQ(bench.command(line).rfind("error: ", 0), 0U) << line;
    EXPECT_EQ(bench.command(""), "");
    EXPECT_EQ(bench.command("# a remark"), "");
}

TEST(BmcsimControl, Conditions) {
    Bench bench;
    const auto holds = [&](const std::string& text) {
        const Outcome outcome = runCommand(bench.bmc, "wait 1 " + text);
        EXPECT_TRUE(outcome.wait) << text << ": " << outcome.error;
        return outcome.wait && outcome.wait->holds(bench.bmc);
    };
    const std::vector<std::string> after = {
        "raw 192 Free",        "equals 192 FreeBSD;", "uploads 192 1",    "selector 201 count 1",
        "sel link up",         "sel count 1",         "show os  FreeBSD", "requests 06/58 4",
        "requests 06/58/c0 1", "complaints 1",        "released 0",       "not raw 192 Linux"};
    size_t before = 0;
    for (const std::string& condition : after)
        before += holds(condition) ? 1 : 0;
    EXPECT_EQ(before, 2U); // the last two
    const Outcome next = runCommand(bench.bmc, "wait 1 next 192 2");
    bench.upload(192, "FreeBSD;");
    bench.count(200, 1);
    bench.upload(201, "em0:0:down;0;0;0;0;");
    bench.send(0x04, 0x02, hex("41 04 D0 FF 6F A1 01 FF"));
    bench.upload(196, "much");
    for (const std::string& condition : after)
        EXPECT_TRUE(holds(condition)) << condition;
    EXPECT_FALSE(next.wait->holds(bench.bmc));
    bench.command("restart"); // counts anew
    bench.upload(192, "FreeBSD;");
    EXPECT_FALSE(next.wait->holds(bench.bmc));
    bench.upload(192, "FreeBSD;");
    EXPECT_TRUE(next.wait->holds(bench.bmc));
    EXPECT_FALSE(holds("quiet 500"));
    bench.bmc.ledger.nowMs += 500;
    EXPECT_TRUE(holds("quiet 500"));
}

TEST(BmcsimControl, TrafficIsCountedAgainstWhatItNeeds) {
    Bench bench;
    bench.upload(193, std::string(64, 'x') + ";");
    bench.command("fault 06/58 code C0 1");
    bench.upload(193, "y;");
    const Traffic& traffic = bench.bmc.traffic[{0x06, 0x58, 193}];
    EXPECT_EQ(traffic.requests, 4U);
    EXPECT_EQ(traffic.failed, 1U);
    EXPECT_EQ(traffic.values, 1U);
    EXPECT_EQ(traffic.needed, 3U);
    EXPECT_EQ(traffic.bytesIn, 4U * 9 + 65 + 2);
    EXPECT_EQ(traffic.bytesOut, 4U * 3);
    EXPECT_NE(bench.command("requests").find("06/58/193  4         1"), std::string::npos);
}

} // namespace
