// A client of the simulated BMC inside the test process, and transcripts of what it says.
#pragma once

#include "simulator/control.h"

#include <gtest/gtest.h>

namespace bmcsim {

inline Bytes hex(const std::string& text) {
    const auto bytes = parseHex(text);
    EXPECT_TRUE(bytes) << text;
    return bytes.value_or(Bytes());
}

inline void expectFlaw(const std::string& flaw, const std::string& expected) {
    EXPECT_EQ(flaw.empty(), expected.empty()) << flaw;
    EXPECT_NE(flaw.find(expected), std::string::npos) << flaw;
}

struct Bench {
    Bmc bmc;
    Session session;

    Bench() {
        session = newSession(bmc);
        session.strict = true; // a client that has just started
    }
    std::string complaints() {
        std::string all;
        for (const std::string& complaint : bmc.ledger.complaints)
            all += complaint + "\n";
        bmc.ledger.complaints.clear();
        return all;
    }
    // One step of a transcript: a request (FULL: 32 bytes), its answer and the complaint that it
    // causes, none if none is given; a request alone is only sent.
    //   06/58 C0 10 FULL -> C7 ? words
    // "!command" is a control command, "+1500" lets milliseconds pass, with "*" another client
    // takes over, at "= name" all begins anew.
    void play(const std::string& step) {
        SCOPED_TRACE(step);
        if (step[0] == '!')
            EXPECT_EQ(runCommand(bmc, step.substr(1)).error, "");
        else if (step[0] == '+')
            bmc.ledger.nowMs += std::stoi(step.substr(1));
        else if (step[0] == '*')
            session = newSession(bmc);
        else if (step[0] == '=')
            *this = Bench();
        else
            exchange(step);
    }
    void playAll(const std::string& steps) {
        for (const std::string& step : splitText(steps, "\n"))
            if (!step.empty())
                play(step);
    }

  private:
    void exchange(const std::string& step) {
        const size_t arrow = step.find(" -> ");
        const size_t mark = step.find(" ? ");
        std::string text = step.substr(0, arrow).replace(2, 1, " ");
        for (size_t at = 0; (at = text.find("FULL")) != std::string::npos;)
            text.replace(at, 4, hexText(Bytes(32, 'A')));
        const Bytes request = hex(text);
        const Bytes answer =
            answerRequest(bmc, session, bmc.ledger.nowMs, request.at(0), request.at(1),
                          Bytes(request.begin() + 2, request.end()));
        if (arrow == std::string::npos)
            return;
        EXPECT_EQ(hexText(answer), step.substr(arrow + 4, mark - arrow - 4));
        expectFlaw(complaints(), mark == std::string::npos ? "" : step.substr(mark + 3));
    }
};

} // namespace bmcsim
