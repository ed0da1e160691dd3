// simulate: plays invented histories of a server below the agent and tells the first flaw of each.
#include "stage.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using sim::Outcome;
using sim::Script;

constexpr const char* USAGE = "usage: simulate (--seed N | --seeds N..M) [--passes N] [--trace]\n";

// The child's side: plays, and writes the outcome as lines.
[[noreturn]] void playInChild(const Script& script, int out, bool quiet) {
    std::FILE* told = fdopen(out, "w");
    if (script.tracing)
        sim::stage.trace = fdopen(dup(STDOUT_FILENO), "w");
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(null, STDOUT_FILENO);
    if (quiet)
        dup2(null, STDERR_FILENO);
    const Outcome outcome = sim::play(script);
    std::fprintf(told, "%d %zu %zu\n%s\n", outcome.passes, outcome.settled, outcome.kept,
                 outcome.flaw.c_str());
    for (const auto& [step, what] : outcome.steps)
        std::fprintf(told, "%d %d %s\n", step.first, step.second, what.c_str());
    std::fflush(nullptr);
    std::exit(0);
}

// Plays a history in a process of its own, so that the agent is as after its start.
Outcome attempt(const Script& script, bool quiet = true) {
    int ends[2];
    std::fflush(nullptr);
    const pid_t child = pipe(ends) == 0 ? fork() : -1;
    if (child == -1) {
        std::perror("simulate");
        std::exit(2);
    }
    if (child == 0)
        playInChild(script, ends[1], quiet);
    close(ends[1]);
    std::string text;
    char buffer[65536];
    for (ssize_t size = 0; (size = read(ends[0], buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<std::size_t>(size));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0 && quiet)
        return attempt(script, false); // once more, to see what it says
    Outcome outcome;
    if (status != 0)
        outcome.flaw = sim::format("the agent ended with status %04X", status);
    std::istringstream lines(text);
    std::string line;
    lines >> outcome.passes >> outcome.settled >> outcome.kept;
    std::getline(lines.ignore(), line);
    outcome.flaw += line;
    for (sim::Step step; lines >> step.first >> step.second && std::getline(lines, line);)
        outcome.steps.emplace_back(step, line);
    return outcome;
}

// Leaves out what does not matter for a failure: halves first, then smaller parts.
Outcome shrink(Script script, Outcome failed) {
    script.passes = failed.passes;
    for (std::size_t part = (failed.steps.size() + 1) / 2; part > 0;
         part = part == 1 ? 0 : (part + 1) / 2)
        for (std::size_t at = 0; at < failed.steps.size();) {
            Script less = script;
            for (std::size_t i = at; i < std::min(at + part, failed.steps.size()); i++)
                less.left_out.insert(failed.steps[i].first);
            Outcome tried = attempt(less);
            if (tried.flaw.empty()) {
                at += part;
                continue;
            }
            script = less;
            script.passes = tried.passes;
            failed = tried;
        }
    return failed;
}

void tellFailure(Script script, const Outcome& failed) {
    std::printf("seed %ju, pass %d: %s\n", script.seed, failed.passes, failed.flaw.c_str());
    script.tracing = false;
    const Outcome least = shrink(script, failed);
    std::printf("  shrunk to pass %d: %s\n", least.passes, least.flaw.c_str());
    for (const auto& [step, what] : least.steps)
        std::printf("  before pass %d:%s\n", step.first, what.c_str());
}

// The script of the first history; the seed of the last.
bool readOptions(int count, char** words, Script& script, std::uintmax_t& last) {
    for (int i = 1; i < count; i++) {
        const std::string word = words[i];
        if (word == "--trace") {
            script.tracing = true;
            continue;
        }
        std::uintmax_t from = 0, to = 0;
        const int read = ++i < count ? std::sscanf(words[i], "%ju..%ju", &from, &to) : 0;
        if (word == "--passes") {
            script.passes = static_cast<int>(from);
        } else if (word == "--seed" || word == "--seeds") {
            script.seed = from;
            last = read == 2 ? to : from;
        }
        if (read < 1)
            return false;
    }
    return last > 0;
}

} // namespace

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    Script script;
    std::uintmax_t last = 0;
    if (!readOptions(argc, argv, script, last)) {
        std::fputs(USAGE, stderr);
        return 2;
    }
    int histories = 0, passes = 0, failures = 0;
    for (; script.seed <= last; script.seed++) {
        const Outcome outcome = attempt(script);
        histories++;
        passes += outcome.passes;
        if (outcome.settled != 0)
            std::printf("seed %ju: %zu blocks of memory at pass 1000, %zu at pass %d\n",
                        script.seed, outcome.settled, outcome.kept, outcome.passes);
        if (!outcome.flaw.empty()) {
            failures++;
            tellFailure(script, outcome);
        }
    }
    std::printf("%d histories, %d passes: %d failed\n", histories, passes, failures);
    return failures == 0 ? 0 : 1;
}
