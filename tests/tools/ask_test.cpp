#include "tools/ask.h"

#include "sandbox.h"

#include <gtest/gtest.h>
#include <map>

namespace {

// What the programs answer, how often each was asked, and the clock.
std::map<std::string, program_answer> answers;
std::map<std::string, int> times;
std::chrono::steady_clock::time_point clock_now;

program_answer printed(const std::string& text, int status = 0) {
    return {program_end::exited, status, text};
}
program_answer ended(program_end end) {
    return {end, 0, ""};
}

class Ask : public testing::Test {
  protected:
    Ask() {
        tools.run = [](const command_line& words, const program_limits& limits) {
            ++times[words.back()];
            program_answer answer = answers[words.back()];
            if (answer.end == program_end::timed_out)
                clock_now += limits.time;
            return answer;
        };
        tools.now = [] { return clock_now; };
        answers.clear();
        times.clear();
        beginAskingCycle();
    }
    void SetUp() override {
        if (!sandboxed)
            GTEST_SKIP() << SANDBOX_DENIED;
    }
    ~Ask() override {
        tools = {};
    }
    const bool sandboxed = enterSandbox();
};

TEST_F(Ask, WhatAnAnswerIsWorth) {
    const struct {
        const char* name;
        program_answer answer;
        bool known_at_first, known_after_success;
    } cases[] = {
        {"printed", printed("x"), true, true},
        {"silent", printed(""), true, true},
        {"failed", printed("x", 1), true, false},
        {"missing", ended(program_end::missing), false, false}, // it was there for the line before
        {"not started", ended(program_end::not_started), false, false},
        {"timed out", ended(program_end::timed_out), false, false},
        {"cut", ended(program_end::cut), false, false},
    };
    answers["absent"] = ended(program_end::missing);
    EXPECT_TRUE(ask({{"absent"}, "label ->"}).known);
    for (const auto& c : cases) {
        const question asked{{"tool", c.name}, "label ->"};
        answers[c.name] = c.answer;
        EXPECT_EQ(ask(asked).known, c.known_at_first) << c.name;
        answers[c.name] = printed("good");
        for (int cycle = 0; cycle < 2 * HUNG_CYCLES; ++cycle)
            beginAskingCycle();
        EXPECT_TRUE(ask(asked).known);
        answers[c.name] = c.answer;
        EXPECT_EQ(ask(asked).text, "good") << "asked once in a cycle";
        beginAskingCycle();
        EXPECT_EQ(ask(asked).known, c.known_after_success) << c.name;
        beginAskingCycle();
    }
    question head{{"tool", "head"}, "label ->"};
    head.head_only = true;
    answers["head"] = ended(program_end::cut);
    EXPECT_TRUE(ask(head).known);
    question mask{{"tool", "mask"}, "label ->"};
    mask.status_counts = false;
    answers["mask"] = printed("x", 4);
    for (int cycle = 0; cycle < 2; ++cycle, beginAskingCycle())
        EXPECT_TRUE(ask(mask).known) << cycle;
}

// A hung program leaves its subject alone for ten cycles, and costs the others nothing.
TEST_F(Ask, AHungSubject) {
    const question first{{"tool", "first"}, "label ->", "ada0"};
    const question second{{"tool", "second"}, "label ->", "ada0"};
    const question other{{"tool", "other"}, "label ->", "ada1"};
    answers["first"] = ended(program_end::timed_out);
    answers["second"] = answers["other"] = printed("x");
    for (int cycle = 0; cycle <= HUNG_CYCLES; ++cycle) {
        EXPECT_FALSE(ask(first).known);
        EXPECT_EQ(ask(second).end, program_end::timed_out);
        EXPECT_TRUE(ask(other).known);
        beginAskingCycle();
        answers["first"] = cycle == HUNG_CYCLES - 1 ? printed("x") : answers["first"];
        if (cycle == HUNG_CYCLES - 1)
            break;
    }
    EXPECT_EQ(times["first"], 1);
    EXPECT_EQ(times["second"], 0);
    EXPECT_EQ(times["other"], HUNG_CYCLES);
    EXPECT_TRUE(ask(first).known && ask(second).known);
    EXPECT_EQ(datedLog("err"), std::vector<std::string>{"label ->  timed out"});
}

TEST_F(Ask, ThePassHasALimit) {
    for (const char* name : {"a", "b", "c", "d"})
        answers[name] = ended(program_end::timed_out);
    {
        const asking_limit limit(std::chrono::seconds(50), "pass ->");
        for (const char* name : {"a", "b", "c", "d"})
            EXPECT_EQ(ask({{"tool", name}, "label ->", name}).end, program_end::timed_out);
    }
    EXPECT_EQ(times["c"] + times["d"], 1) << "nothing is asked once the time is over";
    EXPECT_EQ(datedLog("err").back(), "pass ->  timed out");
    for (int cycle = 0; cycle < HUNG_CYCLES - 1; ++cycle)
        beginAskingCycle();
    ask({{"tool", "a"}, "label ->", "a"});
    ask({{"tool", "c"}, "label ->", "c"});
    EXPECT_EQ(times["a"], 1);
    EXPECT_EQ(times["c"], 2) << "what the end of the pass cut short may be well";
}

} // namespace
