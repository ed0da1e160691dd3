// What the BMC simulator complains of. Where it did not, the tests that rely on it would be blind.
#include "simulator/control.h"
#include "simulator/show.h"

#include <gtest/gtest.h>

using namespace bmcsim;

namespace {

struct Bench {
    Bmc bmc;
    Session session = newSession(bmc);

    Bench() {
        session.strict = true; // a client that has just started
    }
    // One step: "!command" is a control command; at "=" all begins anew; anything else is a request
    // (FULL: 32 bytes), its answer if that matters, and what is complained of, nothing if there is
    // no word of it.
    //   06/58 C0 10 FULL -> C7 ? words
    void play(const std::string& step) {
        SCOPED_TRACE(step);
        if (step[0] == '!')
            EXPECT_EQ(runCommand(bmc, step.substr(1)).error, "");
        else if (step[0] == '=')
            *this = Bench();
        else
            exchange(step);
    }
    void exchange(const std::string& step) {
        const size_t arrow = step.find(" -> "), mark = step.find(" ? ");
        std::string text = step.substr(0, arrow).replace(2, 1, " ");
        for (size_t at = 0; (at = text.find("FULL")) != std::string::npos;)
            text.replace(at, 4, hexText(Bytes(32, 'A')));
        const Bytes sent = parseHex(text).value();
        const Bytes answer = answerRequest(bmc, session, 0, sent.at(0), sent.at(1),
                                           Bytes(sent.begin() + 2, sent.end()));
        if (arrow == std::string::npos)
            return;
        EXPECT_EQ(hexText(answer), step.substr(arrow + 4, mark - arrow - 4));
        expectComplaint(mark == std::string::npos ? "" : step.substr(mark + 3));
    }
    void expectComplaint(const std::string& words) {
        const Lines said = std::exchange(bmc.ledger.complaints, {});
        EXPECT_EQ(said.size(), words.empty() ? 0U : 1U);
        EXPECT_NE((said.empty() ? "" : said[0]).find(words), std::string::npos) << words;
    }
};

TEST(BmcsimComplaints, Requests) {
    const char* const steps = R"(a whole value, one of 33 bytes, a cleared one
06/58 C0 10 02 00 00 00 02 58 3B -> 00
06/58 C0 10 21 00 00 00 20 FULL -> 00
06/58 C0 10 21 00 20 00 01 3B -> 00
06/58 C0 10 00 00 00 00 00 -> 00
= shape
06/58 C0 10 00 00 00 00 -> C7 ? too few
06/58 C0 11 00 00 00 00 00 -> C7 ? instead of 10
06/58 C0 10 02 00 FF 00 02 58 3B -> C7 ? base 255
06/58 C0 10 02 00 00 00 02 58 -> C7 ? announced
06/58 C0 10 21 00 00 00 21 FULL 3B -> C7 ? in one chunk
06/58 D1 10 00 00 00 00 00 -> 80 ? does not exist
= place
06/58 C0 10 21 00 20 00 01 3B -> C9 ? without a beginning
06/58 C0 10 21 00 00 00 10 41 41 41 41 41 41 41 41 41 41 41 41 41 41 41 41 -> C9 ? 16 bytes at offset 0 of 33
06/58 C0 10 61 00 00 00 20 FULL -> 00
06/58 C0 10 61 00 40 00 20 FULL -> C9 ? offset 64 of 97, index 0, instead of 32 at 32
06/58 C0 10 21 00 00 00 20 FULL -> 00
06/58 C0 10 22 00 20 00 02 58 3B -> C9 ? of 34, index 0, instead of 1 at 32 of 33
06/58 C0 10 21 00 00 00 20 FULL -> 00
06/58 C0 10 02 00 00 00 02 58 3B -> 00 ? a new value begins after 32 of 33
= fetches of a command with index 12, whose second digit is in the text
!post 12 key 1
06/59 10 CF 00 00 00 00 00 20 -> 00 11 00 0D 00 00 00 0D 0C 72 65 71 75 65 73 74 3B 6B 65 79 3B 01
06/58 CF 10 03 00 00 00 03 01 32 32 3B -> 00
06/58 D0 10 08 00 00 00 08 01 32 6B 65 79 3B 31 3B 3B -> 00
06/58 CF 10 01 00 00 00 01 01 32 -> 00
06/59 10 CF 00 00 00 FF 00 20 -> C7 ? wrong shape
06/59 10 CF 00 04 00 00 00 20 -> 00 11 00 00 00 00 00 00 00 ? instead of 10 CF 00 00 00 00 00 20
06/59 10 CF 00 00 00 40 00 20 -> C9 ? fetch at offset 64 of 0
= events, files, positions
04/02 42 04 D0 FF 6F A1 02 FF -> 00 ? generator
04/02 41 04 D0 FF 6F A1 03 -> C7 ? 7 bytes instead of 8
!drivemap S1234567890=3
!file 0B preparing 0
30/A0 05 0B -> 00 01 00
30/A0 07 01 00 7C 00 00 00 01 00 -> C9 ? 1 bytes at offset 124 of 124
30/70 6C 01 01 04 01 02 -> CC ? no drive)";
    Bench bench;
    for (const std::string& step : splitText("= " + std::string(steps), "\n"))
        bench.play(step);
}

// What the letters of a row stand for.
std::string stepOf(char letter) {
    static const std::map<char, const char*> steps = {
        {'2', "06/58 C8 10 02 00 00 00 02 02 00"}, // counts of a list
        {'3', "06/58 C8 10 02 00 00 00 02 03 00"},
        {'0', "06/58 C8 10 02 00 00 00 02 00 00"},
        {'i', "06/58 C9 10 13 00 00 00 13 656D303A303A646F776E3B303B303B303B303B"}, // its item
        {'c', "06/58 C0 10 00 00 00 00 00"}, // a clear begins
        {'e', "06/58 CA 10 00 00 00 00 00"}, // and ends
        {'d', "!fault all code C0 1"},       // the next request fails
        {'B', "!restart"},
    };
    return steps.at(letter);
}

TEST(BmcsimComplaints, ListsInOrder) {
    const struct {
        const char* letters;
        const char* complaint;
        size_t stored; // items
    } cases[] = {
        {"2ii2ii", "", 2},
        {"i", "an item without its count", 0},
        {"3ii3iii", "2 of 3 items came before the next count", 3},
        {"2iiii", "more items than the 2 announced", 2},
        {"2dii2ii", "", 2}, // a refused item was sent all the same
        {"2iBi2i2ii", "1 of 2 items came before the next count", 2},
        {"3ic0iie3ii3", "2 of 3 items came before the next count", 0},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.letters);
        Bench bench;
        for (const char* letter = row.letters; *letter != '\0'; letter++)
            bench.play(stepOf(*letter));
        bench.expectComplaint(row.complaint);
        EXPECT_EQ(rawValues(bench.bmc, 201).size(), row.stored);
    }
}

} // namespace
