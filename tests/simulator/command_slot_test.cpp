#include "client.h"

#include <gtest/gtest.h>

using namespace bmcsim;

namespace {

Bytes fetch(Bench& bench, uint8_t index, size_t offset, size_t wanted) {
    return bench.send(0x06, 0x59,
                      {0x10, 0xCF, 0x00, index, 0x00, static_cast<uint8_t>(offset % 255),
                       static_cast<uint8_t>(offset / 255), static_cast<uint8_t>(wanted)});
}

// What an agent does in one cycle, letter by letter: o opens it, f fetches the whole, a
// acknowledges, y and n post a result, r releases; A, Y and R do it with a wrong index or text; x
// clears both selectors, d has the next request fail, N comes from another client.
void act(Bench& bench, char step) {
    switch (step) {
    case 'o':
        return bench.upload(208, "", 0);
    case 'f':
        fetch(bench, 0, 0, 32);
        return;
    case 'a':
        return bench.upload(207, "2;", 4);
    case 'A':
        return bench.upload(207, "3;", 4);
    case 'y':
        return bench.upload(208, "key;1;;", 4);
    case 'n':
        return bench.upload(208, "key;0;;", 4);
    case 'Y':
        return bench.upload(208, "other;1;;", 4);
    case 'r':
        return bench.upload(207, "", 4);
    case 'R':
        return bench.upload(207, "", 5);
    case 'x':
        bench.upload(207, "", 255);
        return bench.upload(208, "", 255);
    case 'd':
        bench.command("fault all code C0 1");
        return;
    default:
        bench.session = newSession(bench.bmc);
    }
}

TEST(BmcsimCommandSlot, OrderOfTheExchange) {
    const struct {
        const char* steps;
        const char* complaint;
        size_t released;
    } cases[] = {
        {"ofayr", "", 1},
        {"ofanrof", "", 1},
        {"ofaxyr", "", 1}, // the command was to clear everything
        {"ofar", "release out of order", 1},
        {"ofr", "release out of order", 1},
        {"ofyr", "result out of order", 1},
        {"ofaayr", "acknowledgement out of order", 1},
        {"ofAyr", "acknowledgement \"3;\"", 1},
        {"ofaYr", "result \"other;1;;\"", 1},
        {"ofayR", "answer to index 5", 0},
        {"a", "an answer to no command", 0},
        {"ofayrr", "an answer to no command", 1},
        {"ofayo", "a new cycle before the command was released", 0},
        {"ofayNof", "", 0},     // the client died, its successor finds nothing
        {"odfofayr", "", 1},    // a failed fetch
        {"ofdayr", "", 1},      // a failed acknowledgement
        {"ofaydrofayr", "", 1}, // a failed release: the command is still on offer
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.steps);
        Bench bench;
        bench.command("post 4 key 5");
        for (const char* step = row.steps; *step != '\0'; step++)
            act(bench, *step);
        EXPECT_EQ(bench.bmc.slot.released, row.released);
        const std::string complaints = bench.complaints();
        EXPECT_EQ(complaints.empty(), *row.complaint == '\0') << complaints;
        EXPECT_NE(complaints.find(row.complaint), std::string::npos) << complaints;
    }
}

TEST(BmcsimCommandSlot, AMalformedCommandIsReleasedWithoutAnAnswer) {
    for (const char* text : {"78", "783B3B01", "783B6B65793B", "783B6B6579"}) {
        SCOPED_TRACE(text);
        Bench bench;
        bench.command(std::string("postraw 4 ") + text);
        for (const char step : {'o', 'f', 'r'})
            act(bench, step);
        EXPECT_EQ(bench.complaints(), "");
    }
}

TEST(BmcsimCommandSlot, FetchesInChunks) {
    Bench bench;
    EXPECT_EQ(fetch(bench, 0, 0, 32), hex("00 11 00 00 00 00 00 00 00"));
    std::string text = "x;key;\x01\x01";
    text.resize(300, 'z');
    bench.command("postraw 12 " + hexText(bytesOf(text)));
    std::string fetched;
    for (size_t offset = 0; offset < 300;) {
        const Bytes answer =
            fetch(bench, offset == 0 ? 0 : 12, offset, std::min<size_t>(32, 300 - offset));
        ASSERT_GT(answer.size(), 9U);
        EXPECT_EQ(littleEndian(answer, 3, 2), 300U);
        EXPECT_EQ(littleEndian(answer, 5, 2), offset); // base 256 this way
        EXPECT_EQ(answer[8], 12);
        fetched.append(answer.begin() + 9, answer.end());
        offset += answer[7];
    }
    EXPECT_EQ(fetched, text);
    bench.upload(207, "22;", 1); // the second digit of index 12 is in the text
    bench.upload(208, "2key;1;;", 1);
    bench.upload(207, "2", 1);
    EXPECT_EQ(bench.bmc.slot.released, 1U);
    EXPECT_EQ(bench.complaints(), "");
    const struct {
        const char* request;
        uint8_t code;
        const char* complaint;
    } wrong[] = {
        {"10 CF 00 00 00 00 00", 0xC7, "wrong shape"},
        {"10 CF 00 00 00 FF 00 20", 0xC7, "wrong shape"},
        {"00 CF 00 00 00 00 00 20", 0x00, "fixed bytes"},
        {"10 CF 00 00 00 00 00 10", 0x00, "16 bytes wanted"},
        {"10 CF 00 04 00 00 00 20", 0x00, "index 4 instead of 0"},
        {"10 CF 00 00 00 40 00 20", 0xC9, "fetch at offset 64 of 0"},
        {"10 C0 00 00 00 00 00 20", 0x80, ""},
    };
    for (const auto& row : wrong) {
        SCOPED_TRACE(row.request);
        EXPECT_EQ(bench.send(0x06, 0x59, hex(row.request))[0], row.code);
        const std::string complaints = bench.complaints();
        EXPECT_NE(complaints.find(row.complaint), std::string::npos) << complaints;
    }
}

} // namespace
