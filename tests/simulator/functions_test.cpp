#include "client.h"

using namespace bmcsim;

namespace {

TEST(BmcsimFunctions, WhatAClientIsAnswered) {
    Bench().playAll(R"(
= the event log, as an ordinary client reads and clears it
!clock 1700000000
!capacity 3
0A/43 00 00 00 00 00 FF -> CB
04/02 41 04 D0 FF 6F A1 01 FF -> 00
04/02 41 04 D0 FF 6F A1 02 FF -> 00
+2500
0A/44 00 00 02 00 00 00 00 41 00 04 07 01 6F 01 02 03 -> 00 03 00
04/02 41 04 D0 FF 6F A1 03 FF -> C4
0A/40 -> 00 51 03 00 00 00 02 F1 53 65 00 00 00 00 8B
0A/48 -> 00 02 F1 53 65
0A/43 00 00 00 00 00 FF -> 00 02 00 01 00 02 00 F1 53 65 41 00 04 D0 FF 6F A1 01 FF
0A/43 00 00 FF FF 00 FF -> 00 FF FF 03 00 02 02 F1 53 65 41 00 04 07 01 6F 01 02 03
0A/42 -> 00 01 00
0A/43 01 00 02 00 0A 03 -> 00 03 00 D0 FF 6F
0A/47 02 00 43 4C 52 AA -> C5
0A/47 01 00 43 4C 52 AA -> 00 01
0A/43 00 00 00 00 00 FF -> CB
0A/49 78 56 34 12 -> 00
0A/48 -> 00 78 56 34 12
= events
04/02 41 04 0D FF 70 A1 13 FF -> 00
04/02 41 04 0D 5F F0 A7 03 3C -> 00
04/02 20 04 07 11 6F 01 FF FF -> 00
04/02 41 04 0D FF 70 A4 02 FF -> 00 ? unknown drive condition
04/02 41 04 0D FF 71 A1 02 FF -> 00 ? neither asserted
04/02 41 04 0D FE 70 A1 02 FF -> 00 ? sensor number
04/02 41 04 0D FF 70 A1 02 00 -> 00 ? last byte
04/02 41 04 D0 FF 6F A3 02 FF -> 00 ? no link event
04/02 42 04 D0 FF 6F A1 02 FF -> 00 ? generator
04/02 41 03 D0 FF 6F A1 02 FF -> 00 ? revision
04/02 41 04 D0 FF 6F A1 03 -> C7 ? 7 bytes instead of 8
= what is not there, and what makes no sense
2C/00 00 -> C1
04/10 -> C1
30/B6 01 -> D5
30/A0 05 0B -> CB
!drivemap S1234567890=3
!file 0B preparing 0
30/A0 05 0B -> 00 01 00
30/A0 06 01 00 -> 00 00 7C 00 00 00
30/A0 07 01 00 7C 00 00 00 01 00 -> C9 ? 1 bytes at offset 124 of 124
30/A0 08 01 00 -> 00
30/A0 08 01 00 -> C5 ? without a valid reservation
30/70 6C 00 01 18 01 02 00 19 -> CC ? position query
30/70 6C 01 01 04 01 02 -> CC ? no drive
= faults hit their target and their count, scripted answers go first
!fault 06/58/C0 code C1 2
!fault 0A/48 code D2
06/58 C1 10 00 00 00 00 00 -> 00
06/58 C0 10 00 00 00 00 00 -> C1
06/58 C0 10 00 00 00 00 00 -> C1
06/58 C0 10 00 00 00 00 00 -> 00
!answer 0A/48 00 01
0A/48 -> 00 01
0A/48 -> D2
0A/48 -> D2
!nofault
0A/48 -> 00 00 00 00 00
)");
}

TEST(BmcsimFunctions, EachFaultOnTheWire) {
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
        bench.play(std::string("!fault 06/01 ") + row.fault + " 1");
        const Wire wire = handleRequest(bench.bmc, bench.session, request);
        expectFlaw(hexText(wire.bytes), row.wire);
        EXPECT_EQ(wire.delayMs, row.delayMs);
        EXPECT_EQ(wire.close, row.close);
        const Wire next = handleRequest(bench.bmc, bench.session, request);
        EXPECT_EQ(hexText(next.bytes), good); // it hit one request only
    }
}

TEST(BmcsimFunctions, WrongCommandsAreErrors) {
    Bench bench;
    const char* const lines =
        "bogus|raw 256|raw x|sel wipe|wait|wait 1|wait x sel a|wait 1 bogus|wait 1 raw 192|"
        "wait 1 selector 192 count 1|wait 1 show bogus x|post 1 key|post 256 key 1|postraw 1 XY|"
        "fault all|fault 06 silent|fault 06/58 bogus|fault 06/58 late|fault 06/58 code 100|"
        "fault 06/58 silent 0|fault all silent 1 2|fault 40/01 silent|answer all G|delay|"
        "watchdog on|ipmi 3|clock -1|file 0B length 5|file 0B /no/such/file|drivemap serial|"
        "nvme 2 0 0 S|show bogus";
    for (const std::string& line : splitText(lines, "|"))
        EXPECT_NE(runCommand(bench.bmc, line).error, "") << line;
}

} // namespace
