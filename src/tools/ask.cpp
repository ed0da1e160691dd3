#include "tools/ask.h"

#include "config/logs.h"
#include "state/flags.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// What is remembered of a command line.
struct asked_line {
    reply answer;
    bool asked = false;     // in this cycle
    bool succeeded = false; // in any cycle
    int idle_cycles = 0;
};

std::map<command_line, asked_line> lines;
std::set<std::string> found;     // programs that were there
std::map<std::string, int> hung; // by subject: cycles until it is asked again

struct pass_limit {
    steady_clock::time_point until;
    const char* label;
    bool told = false;
};
std::optional<pass_limit> pass;

// What is left of the time for one program, none when the pass is over.
milliseconds timeLeft() {
    if (!pass.has_value())
        return PROGRAM_SECONDS;
    const auto left = std::chrono::ceil<milliseconds>(pass->until - tools.now());
    return std::clamp<milliseconds>(left, milliseconds(0), PROGRAM_SECONDS);
}

program_answer run(const question& asked) {
    const std::string& subject = asked.subject.empty() ? asked.words.front() : asked.subject;
    program_answer answer;
    answer.end = program_end::timed_out;
    if (hung.count(subject) != 0)
        return answer;
    const milliseconds time = timeLeft();
    if (time.count() == 0) {
        if (!std::exchange(pass->told, true))
            printErrLog(pass->label, "timed out");
        return answer;
    }
    if (stopRequested())
        return answer;
    answer = tools.run(asked.words, {time, asked.bytes, stopRequested});
    if (answer.end == program_end::timed_out && !stopRequested()) {
        printErrLog(asked.label, "timed out");
        if (time == PROGRAM_SECONDS) // one that the end of the pass cut short may be well
            hung[subject] = HUNG_CYCLES;
    }
    return answer;
}

bool isKnown(const question& asked, const reply& answer, bool succeeded_before) {
    switch (answer.end) {
    case program_end::exited:
        return !asked.status_counts || answer.exit_status == 0 || !succeeded_before;
    case program_end::missing:
        return found.count(asked.words.front()) == 0;
    case program_end::cut:
    case program_end::not_started:
    case program_end::timed_out:
        return false;
    }
    return false;
}

} // namespace

const reply& ask(const question& asked) {
    asked_line& line = lines[asked.words];
    if (std::exchange(line.asked, true))
        return line.answer;
    program_answer answer = run(asked);
    if (answer.end == program_end::exited)
        found.insert(asked.words.front());
    line.answer = {std::move(answer.text), answer.end, answer.exit_status, false};
    line.answer.known = isKnown(asked, line.answer, line.succeeded);
    line.succeeded = line.succeeded || (line.answer.end == program_end::exited &&
                                        (line.answer.exit_status == 0 || !asked.status_counts));
    return line.answer;
}

void beginAskingCycle() {
    for (auto line = lines.begin(); line != lines.end();) {
        line->second.answer = {};
        const bool asked = std::exchange(line->second.asked, false);
        line->second.idle_cycles = asked ? 0 : line->second.idle_cycles + 1;
        // A subject that is left alone is not forgotten meanwhile.
        line = line->second.idle_cycles > 2 * HUNG_CYCLES ? lines.erase(line) : std::next(line);
    }
    for (auto subject = hung.begin(); subject != hung.end();)
        subject = --subject->second == 0 ? hung.erase(subject) : std::next(subject);
}

asking_limit::asking_limit(std::chrono::seconds time, const char* label) {
    pass = {tools.now() + time, label};
}

asking_limit::~asking_limit() {
    pass.reset();
}
