#include "client.h"

using namespace bmcsim;

namespace {

TEST(BmcsimFunctions, WhatAClientIsAnswered) {
    Bench().playAll(R"(
= the event log, as an ordinary client reads it
!clock 1700000000
0A/43 00 00 00 00 00 FF -> CB
04/02 41 04 D0 FF 6F A1 01 FF -> 00
04/02 41 04 D0 FF 6F A1 02 FF -> 00
+2500
04/02 41 04 07 01 6F 01 02 03 -> 00
0A/40 -> 00 51 03 00 D0 FF 02 F1 53 65 00 00 00 00 00
0A/43 00 00 00 00 00 FF -> 00 02 00 01 00 02 00 F1 53 65 41 00 04 D0 FF 6F A1 01 FF
0A/43 00 00 FF FF 00 FF -> 00 FF FF 03 00 02 02 F1 53 65 41 00 04 07 01 6F 01 02 03
0A/43 00 00 02 00 00 FF -> 00 03 00 02 00 02 00 F1 53 65 41 00 04 D0 FF 6F A1 02 FF
!sel clear
0A/43 00 00 00 00 00 FF -> CB
0A/40 -> 00 51 00 00 FF FF 02 F1 53 65 02 F1 53 65 00
= events
04/02 41 04 0D FF 70 A1 13 FF -> 00
04/02 41 04 0D 5F F0 A7 03 3C -> 00
04/02 41 04 0D FF 70 A4 02 FF -> 00 ? unknown drive condition
04/02 41 04 0D FF 71 A1 02 FF -> 00 ? neither asserted
04/02 41 04 0D FF 70 A1 02 00 -> 00 ? last byte
04/02 41 04 D0 FF 6F A3 02 FF -> 00 ? no link event
04/02 42 04 D0 FF 6F A1 02 FF -> 00 ? generator
04/02 41 04 D0 FF 6F A1 03 -> C7 ? 7 bytes instead of 8
= what is not there, and what makes no sense
2C/00 00 -> C1
!drivemap S1234567890=3
!file 0B preparing 0
30/A0 05 0B -> 00 01 00
30/A0 06 01 00 -> 00 00 7C 00 00 00
30/A0 07 01 00 7C 00 00 00 01 00 -> C9 ? 1 bytes at offset 124 of 124
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
!fault 0A/40 short 3
!fault 0A/43 long 4 1
!fault all silent 1
0A/48 -> 00 01
0A/48 -> D2
0A/40 -> 00 51 00
0A/43 -> C7 EE EE EE
0A/43 -> 
0A/43 -> C7
)");
}

} // namespace
