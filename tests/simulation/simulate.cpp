// simulate: plays invented histories of a server below the agent and tells the first flaw of each.
#include "play.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using sim::Outcome;
using sim::Script;
using sim::Step;

constexpr const char* USAGE = "usage: simulate (--seed N | --seeds N..M) [--passes N] [--trace]\n";

void silence(int descriptor) {
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(null, descriptor);
    close(null);
}

// The child's side: plays, and writes the outcome as lines.
[[noreturn]] void playInChild(const Script& script, int out, bool quiet) {
    std::FILE* told = fdopen(out, "w");
    silence(STDOUT_FILENO);
    if (quiet)
        silence(STDERR_FILENO);
    const Outcome outcome = sim::play(script);
    std::fprintf(told, "%d %zu %zu\n%s\n", outcome.passes, outcome.settled, outcome.kept,
                 outcome.flaw.c_str());
    for (const auto& [step, what] : outcome.steps)
        std::fprintf(told, "%d %d %s\n", step.pass, step.number, what.c_str());
    for (const std::string& line : sim::stage.trace)
        std::fprintf(told, "%s\n", line.c_str());
    std::fclose(told);
    std::exit(0);
}

std::string readAll(int in) {
    std::string text;
    char buffer[65536];
    for (ssize_t size = 0; (size = read(in, buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<std::size_t>(size));
    return text;
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
    const std::string text = readAll(ends[0]);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0 && quiet)
        return attempt(script, false); // once more, to see what it says
    Outcome outcome;
    const bmcsim::Lines lines = bmcsim::splitText(text, "\n");
    if (status != 0)
        outcome.flaw = sim::format("the agent ended with status %04X", status);
    if (lines.size() < 2)
        return outcome;
    std::sscanf(lines[0].c_str(), "%d %zu %zu", &outcome.passes, &outcome.settled, &outcome.kept);
    outcome.flaw += lines[1];
    for (std::size_t i = 2; i + 1 < lines.size(); i++) {
        Step step;
        int end = 0;
        if (script.tracing)
            std::printf("%s\n", lines[i].c_str());
        else if (std::sscanf(lines[i].c_str(), "%d %d %n", &step.pass, &step.number, &end) == 2)
            outcome.steps.emplace_back(step, lines[i].substr(static_cast<std::size_t>(end)));
    }
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

void tellFailure(const Script& script, const Outcome& failed) {
    std::printf("seed %llu, pass %d: %s\n", static_cast<unsigned long long>(script.seed),
                failed.passes, failed.flaw.c_str());
    const Outcome least = shrink(script, failed);
    std::printf("  shrunk to pass %d: %s\n", least.passes, least.flaw.c_str());
    for (const auto& [step, what] : least.steps)
        std::printf("  before pass %d: %s\n", step.pass, what.c_str());
}

struct Options {
    Script script;
    unsigned long long last = 1;
};

bool readOptions(int count, char** words, Options& options) {
    bool seeded = false;
    for (int i = 1; i < count; i++) {
        const std::string word = words[i];
        const char* value = i + 1 < count ? words[i + 1] : "";
        unsigned long long first = 0;
        if (word == "--trace") {
            options.script.tracing = true;
            continue;
        }
        const int read = std::sscanf(value, "%llu..%llu", &first, &options.last);
        if (read < 1)
            return false;
        if (word == "--passes") {
            options.script.passes = static_cast<int>(first);
        } else {
            options.script.seed = first;
            options.last = read == 2 ? options.last : first;
            seeded = word == "--seed" || word == "--seeds";
        }
        i++;
    }
    return seeded;
}

} // namespace

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    Options options;
    if (!readOptions(argc, argv, options)) {
        std::fputs(USAGE, stderr);
        return 2;
    }
    unsigned long long histories = 0, passes = 0, failures = 0;
    for (Script script = options.script; script.seed <= options.last; script.seed++) {
        const Outcome outcome = attempt(script);
        histories++;
        passes += static_cast<unsigned long long>(outcome.passes);
        if (outcome.settled != 0)
            std::printf("seed %llu: %zu blocks of memory at pass 1000, %zu at pass %d\n",
                        static_cast<unsigned long long>(script.seed), outcome.settled, outcome.kept,
                        outcome.passes);
        if (!outcome.flaw.empty()) {
            failures++;
            script.tracing = false;
            tellFailure(script, attempt(script));
            script.tracing = options.script.tracing;
        }
    }
    std::printf("%llu histories, %llu passes: %llu failed\n", histories, passes, failures);
    return failures == 0 ? 0 : 1;
}
