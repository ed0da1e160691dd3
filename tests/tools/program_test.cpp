#include "tools/program.h"

#include "recorded_host.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

// The process groups that a test's program leaves behind end within a moment of the answer.
bool ends(const std::string& pid) {
    for (int i = 0; i < 500; ++i) {
        std::ifstream status("/proc/" + pid.substr(0, pid.find('\n')) + "/stat");
        std::string word;
        if (!(status >> word >> word >> word) || word == "Z")
            return true;
        usleep(10000);
    }
    return false;
}

TEST(Program, Answers) {
    const recorded_host host;
    setenv("LC_ALL", "xx_XX", 1);
    for (const char* name : {"BLOCKSIZE", "UNAME_r", "KEPT"})
        setenv(name, name, 1);
    ASSERT_EQ(dup2(STDIN_FILENO, 9), 9);
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    const struct {
        const char* script;
        program_end end;
        int status;
        std::string text;
    } cases[] = {
        {"printf 'a\\0\\r\\tb\\033\\177\\303c\\n\\nd'; exit 3", program_end::exited, 3,
         "a\tb\303c\n\nd"},
        {"echo x; kill -9 $$", program_end::exited, 137, "x\n"},
        {"kill -TERM $$; echo still here", program_end::exited, 143, ""},
        {"cat; echo eof >&2", program_end::exited, 0, ""},
        {"echo $LC_ALL,$BLOCKSIZE,$UNAME_r,$KEPT", program_end::exited, 0, "C,,,KEPT\n"},
        {"[ -e /proc/self/fd/9 ] && echo inherited", program_end::exited, 1, ""},
        {"echo \"$1|$2\"", program_end::exited, 0, "$(id) '\"|*\n"},
        {"head -c 100000000 /dev/zero | tr '\\0' x", program_end::cut, 0, std::string(1000, 'x')},
    };
    for (const auto& c : cases) {
        host.tool("tool", c.script);
        const program_answer answer = runProgram({"tool", "$(id) '\"", "*"}, {seconds(20), 1000});
        EXPECT_EQ(answer.end, c.end) << c.script;
        EXPECT_EQ(answer.exit_status, c.status) << c.script;
        EXPECT_EQ(answer.text, c.text) << c.script;
    }
    for (const command_line& none : {command_line{}, {""}, {"no-such-tool"}, {"bin"}})
        EXPECT_EQ(runProgram(none, {}).end, program_end::missing);
}

TEST(Program, NothingThatHangsIsWaitedForNorLeftBehind) {
    const recorded_host host;
    const struct {
        const char* script; // prints the process that hangs
        program_end end;
        milliseconds time;
        bool (*given_up)();
    } cases[] = {
        {"sleep 1000 & echo $!; wait", program_end::timed_out, milliseconds(500), nullptr},
        {"echo $$; exec sleep 1000", program_end::timed_out, seconds(60), [] { return true; }},
        {"echo $$; while sleep 0.1; do printf x; done", program_end::timed_out, milliseconds(500),
         nullptr},
        {"echo $$; exec >/dev/null; exec sleep 1000", program_end::timed_out, milliseconds(500),
         nullptr},
        {"sleep 1000 & echo $!", program_end::exited, seconds(60), nullptr},
    };
    for (const auto& c : cases) {
        host.tool("tool", c.script);
        const auto start = steady_clock::now();
        const program_answer answer = runProgram({"tool"}, {c.time, PROGRAM_BYTES, c.given_up});
        EXPECT_EQ(answer.end, c.end) << c.script;
        EXPECT_LT(steady_clock::now() - start, seconds(20)) << c.script;
        EXPECT_TRUE(answer.text.empty() || ends(answer.text)) << c.script;
    }
}

TEST(Program, NoDescriptorLeft) {
    const recorded_host host;
    host.tool("tool", "echo x");
    EXPECT_EQ(runProgram({"tool"}, {}).text, "x\n");
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{3, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    EXPECT_EQ(runProgram({"tool"}, {}).end, program_end::not_started);
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(runProgram({"tool"}, {}).end, program_end::exited);
}

} // namespace
