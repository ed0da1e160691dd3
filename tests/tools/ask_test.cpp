#include "tools/ask.h"

#include "sandbox.h"

#include <gtest/gtest.h>
#include <map>

namespace {

// What the programs answer, how often each was asked, and the clock.
std::map<std::string, program_answer> answers;
std::map<std::string, int> times;
std::chrono::steady_clock::time_point clock_now;

const program_answer HUNG{program_end::timed_out, 0, ""};
program_answer printed(const std::string& text, int status = 0) {
    return {program_end::exited, status, text};
}

class Ask : public testing::Test {
  protected:
    void SetUp() override {
        if (!enterSandbox())
            GTEST_SKIP() << SANDBOX_DENIED;
        tools.run = [](const command_line& words, const program_limits& limits) {
            ++times[words.back()];
            program_answer answer = answers[words.back()];
            if (answer.end == program_end::timed_out)
                clock_now += limits.time;
            return answer;
        };
        tools.now = [] { return clock_now; };
    }
};

void wait(int cycles) {
    while (cycles-- > 0)
        beginAskingCycle();
}

TEST_F(Ask, WhatAnAnswerIsWorth) {
    const struct {
        const char* name;
        program_answer answer;
        bool known_at_first, known_after_success;
    } cases[] = {
        {"absent", {program_end::missing, 0, ""}, true, false},
        {"printed", printed("x"), true, true},
        {"silent", printed(""), true, true},
        {"failed", printed("x", 1), true, false},
        {"missing", {program_end::missing, 0, ""}, false, false}, // it was there for others
        {"not started", {program_end::not_started, 0, ""}, false, false},
        {"timed out", HUNG, false, false},
        {"cut", {program_end::cut, 0, ""}, false, false},
    };
    for (const auto& c : cases) {
        const question asked{{"tool", c.name}, "label ->"};
        answers[c.name] = c.answer;
        EXPECT_EQ(ask(asked).known, c.known_at_first) << c.name;
        answers[c.name] = printed("good");
        wait(2 * HUNG_CYCLES);
        EXPECT_TRUE(ask(asked).known);
        answers[c.name] = c.answer;
        EXPECT_EQ(ask(asked).text, "good") << "asked once in a cycle";
        wait(1);
        EXPECT_EQ(ask(asked).known, c.known_after_success) << c.name;
        wait(1);
    }
}

TEST_F(Ask, ThePassHasALimit) {
    for (const char* name : {"a", "b", "c", "d"})
        answers[name] = HUNG;
    {
        const asking_limit limit(std::chrono::seconds(50), "pass ->");
        for (const char* name : {"a", "b", "c", "d"})
            EXPECT_EQ(ask({{"tool", name}, "label ->", name}).end, program_end::timed_out);
    }
    EXPECT_EQ(times["c"] + times["d"], 1) << "nothing is asked once the time is over";
    const std::string label = "label ->  timed out";
    EXPECT_EQ(datedLog("err"),
              (std::vector<std::string>{label, label, label, "pass ->  timed out"}));
    wait(1);
    ask({{"tool", "c"}, "label ->", "c"});
    EXPECT_EQ(times["c"], 2) << "what the end of the pass cut short may be well";
}

} // namespace
