// Asking programs on behalf of the collectors: each command line once a cycle, and how far an
// answer may be believed. Collecting thread, or one-shot process, only.
#pragma once

#include "tools/program.h"

// How many cycles a subject whose program hung is left alone.
constexpr int HUNG_CYCLES = 10;

struct question {
    command_line words;
    const char* label;        // of the line "timed out" in the error log
    std::string subject = {}; // the device asked about; empty: the program itself
    std::size_t bytes = PROGRAM_BYTES;
    bool status_counts = true; // false: the exit status is a bit mask, and the text tells
};

struct reply {
    std::string text;
    program_end end = program_end::missing;
    int exit_status = 0;
    // False when nothing follows from this answer: the program could not be started, timed out,
    // was cut, or failed or was not there where it had been before. Not knowing is not news.
    bool known = false;

    bool succeeded() const {
        return end == program_end::exited && exit_status == 0;
    }
};

// Asks, unless the same command line was asked in this cycle already, whose answer then counts. A
// subject whose program timed out is not asked anything for the rest of this cycle and the nine
// that follow: its replies are timed_out. So is every reply once the process is to end. The reply
// stays valid until the next cycle begins.
const reply& ask(const question& asked);

// Begins a cycle: everything is asked anew. A one-shot process is one cycle.
void beginAskingCycle();

// While it lives, all questions together have this much time; what is asked beyond it is timed_out,
// which is logged once under `label`.
class asking_limit {
  public:
    asking_limit(std::chrono::seconds time, const char* label);
    ~asking_limit();
    asking_limit(const asking_limit&) = delete;
    asking_limit& operator=(const asking_limit&) = delete;
};
