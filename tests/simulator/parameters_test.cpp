#include "client.h"

#include "simulator/show.h"

#include <gtest/gtest.h>

using namespace bmcsim;

namespace {

const char* const LAN = "1;02:11:22:33:44:55;em0;N/A;fe80::1%em0;N/A;N/A;h;N/A;1000;card;up;";

// Chunks of one value, in hexadecimal, and what the last one is answered with.
TEST(BmcsimParameters, ChunksThatDoNotAddUp) {
    const std::string full = " 41414141414141414141414141414141 41414141414141414141414141414141";
    const struct {
        const char* name;
        std::vector<std::string> chunks;
        uint8_t code;
        const char* complaint; // "" for none
    } cases[] = {
        {"a whole value", {"C0 10 02 00 00 00 02 58 3B"}, 0x00, ""},
        {"33 bytes", {"C0 10 21 00 00 00 20" + full, "C0 10 21 00 20 00 01 3B"}, 0x00, ""},
        {"cleared", {"C0 10 00 00 00 00 00"}, 0x00, ""},
        {"too short", {"C0 10 00 00 00 00"}, 0xC7, "too few"},
        {"no index byte", {"CF 10 00 00 00 00 00"}, 0xC7, "too few"},
        {"fixed byte", {"C0 11 00 00 00 00 00"}, 0xC7, "instead of 10"},
        {"total digit 255", {"C0 10 FF 00 00 00 20" + full}, 0xC7, "base 255"},
        {"offset digit 255", {"C0 10 02 00 FF 00 02 58 3B"}, 0xC7, "base 255"},
        {"count above the bytes", {"C0 10 02 00 00 00 02 58"}, 0xC7, "announced"},
        {"count below the bytes", {"C0 10 02 00 00 00 01 58 3B"}, 0xC7, "announced"},
        {"33 bytes in a chunk", {"C0 10 21 00 00 00 21" + full + "3B"}, 0xC7, "in one chunk"},
        {"short first chunk",
         {"C0 10 21 00 00 00 10 41414141414141414141414141414141"},
         0xC9,
         "16 bytes at offset 0 of 33"},
        {"more than the total", {"C0 10 01 00 00 00 02 58 3B"}, 0xC9, "2 bytes at offset 0 of 1"},
        {"no beginning", {"C0 10 21 00 20 00 01 3B"}, 0xC9, "without a beginning"},
        {"a gap",
         {"C0 10 61 00 00 00 20" + full, "C0 10 61 00 40 00 20" + full},
         0xC9,
         "offset 64 instead of 32"},
        {"base 256 offset",
         {"C0 10 2D 01 00 00 20" + full, "C0 10 2D 01 00 01 20" + full},
         0xC9,
         "offset 255 instead of 32"},
        {"total changes",
         {"C0 10 21 00 00 00 20" + full, "C0 10 22 00 20 00 02 58 3B"},
         0xC9,
         "total length was 33, is 34"},
        {"index changes",
         {"D0 10 21 00 00 00 20 01" + full, "D0 10 21 00 20 00 01 02 3B"},
         0xC9,
         "index was 1, is 2"},
        {"begins anew",
         {"C0 10 21 00 00 00 20" + full, "C0 10 02 00 00 00 02 58 3B"},
         0x00,
         "a new value begins after 32 of 33"},
        {"standard selector", {"01 10 00"}, 0x80, ""},
        {"beyond the last selector", {"D1 10 00 00 00 00 00"}, 0x80, "does not exist"},
        {"nothing", {""}, 0xC7, ""},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        Bench bench;
        Bytes answer;
        for (const std::string& chunk : row.chunks)
            answer = bench.send(0x06, 0x58, hex(chunk));
        EXPECT_EQ(answer, Bytes{row.code});
        const std::string complaints = bench.complaints();
        EXPECT_EQ(complaints.empty(), *row.complaint == '\0') << complaints;
        EXPECT_NE(complaints.find(row.complaint), std::string::npos) << complaints;
    }
}

TEST(BmcsimParameters, ValuesOfEveryLengthComeBackWhole) {
    Bench bench;
    for (const size_t size : std::vector<size_t>{1, 31, 32, 33, 254, 255, 256, 257, 300, 1022}) {
        std::string value(size, 'x');
        for (size_t i = 0; i < size; i++)
            value[i] = static_cast<char>('a' + i % 26);
        value += ';';
        bench.upload(192, value);
        EXPECT_EQ(rawValues(bench.bmc, 192), Lines{value});
        EXPECT_EQ(bench.complaints(), "");
    }
    bench.upload(208, "abc;1;;", 3);
    EXPECT_EQ(rawValues(bench.bmc, 208), Lines{"3 abc;1;;"});
}

// Steps: "N" a count, "i" an item, "r" the next upload is refused, "R" the BMC restarts, "D" the
// client connects anew, "c" a clear begins, "0" its count, "e" a clear ends.
TEST(BmcsimParameters, ListsAgainstTheirCounts) {
    const struct {
        const char* steps;
        const char* complaint;
        size_t stored;
    } cases[] = {
        {"2ii", "", 2},
        {"2ii2ii", "", 2},
        {"i", "an item without its count", 0},
        {"3ii3iii", "2 of 3 items came before the next count", 3},
        {"1ii", "more items than the 1 announced", 1},
        {"2iiii", "more items than the 2 announced", 2},
        {"2ri i2ii", "", 2}, // a refused item was sent all the same
        {"r2ii", "", 0},     // and so was a refused count
        {"2iRi", "", 0},     // the BMC restarts in the middle
        {"2iRi2i2ii", "1 of 2 items came before the next count", 2},
        {"2iDi2ii", "", 2},     // the client lost its connection
        {"3ic0iie3iii", "", 3}, // a clear in the middle of a list
        {"3ic0iie3ii3", "2 of 3 items came before the next count", 0},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.steps);
        Bench bench;
        for (const char* step = row.steps; *step != '\0'; step++) {
            if (*step >= '0' && *step <= '9')
                bench.count(194, static_cast<size_t>(*step - '0'));
            else if (*step == 'i')
                bench.upload(195, LAN);
            else if (*step == 'r')
                bench.command("fault 06/58 code C3 1");
            else if (*step == 'R')
                bench.command("restart");
            else if (*step == 'D')
                bench.session = newSession(bench.bmc);
            else if (*step == 'c' || *step == 'e')
                bench.upload(*step == 'c' ? 192 : 202, "");
        }
        bench.command("nofault");
        EXPECT_EQ(rawValues(bench.bmc, 195).size(), row.stored);
        const std::string complaints = bench.complaints();
        EXPECT_EQ(complaints.empty(), *row.complaint == '\0') << complaints;
        EXPECT_NE(complaints.find(row.complaint), std::string::npos) << complaints;
    }
}

TEST(BmcsimParameters, TwoClientsDoNotDisturbEachOther) {
    Bench bench;
    Session other = newSession(bench.bmc);
    const std::string tail = " 42424242424242424242424242424242 42424242424242424242424242424242";
    bench.send(0x06, 0x58, hex("C0 10 21 00 00 00 20" + tail));
    bench.upload(other, 192, "Other;");
    bench.send(0x06, 0x58, hex("C0 10 21 00 20 00 01 3B"));
    EXPECT_EQ(rawValues(bench.bmc, 192), Lines{std::string(32, 'B') + ";"});
    bench.count(194, 2);
    bench.upload(195, LAN);
    bench.upload(other, 194, std::string("\1\0", 2));
    bench.upload(195, LAN);
    bench.upload(other, 195, LAN);
    EXPECT_EQ(rawValues(bench.bmc, 195).size(), 1U); // the list announced last
    EXPECT_EQ(bench.complaints(), "");
}

TEST(BmcsimParameters, StorageLinesThatCameInPiecesAreOneRecord) {
    Bench bench;
    bench.count(198, 2);
    bench.upload(199, "LSI;/dev/pass1:OK:");
    bench.upload(199, "S1:F1:4;");
    bench.upload(199, "LSI;/dev/pass2:Fail:S2:F2:5;");
    EXPECT_EQ(rawValues(bench.bmc, 199),
              (Lines{"LSI;/dev/pass1:OK:S1:F1:4;", "LSI;/dev/pass2:Fail:S2:F2:5;"}));
    EXPECT_EQ(bench.complaints(), "");
}

} // namespace
