#include "sandbox.h"
#include "shell.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;

std::vector<std::string> pieces(const std::string& command, int deadline_s = 20) {
    shell_capture shell(command, "test ->", deadline_s);
    std::vector<std::string> all;
    for (std::string piece; shell.readPiece(piece);)
        all.push_back(piece);
    return all;
}

// The process groups that a test's command leaves behind end within a moment of the capture.
bool ends(pid_t pid) {
    for (int i = 0; i < 500; ++i) {
        std::ifstream status("/proc/" + std::to_string(pid) + "/stat");
        std::string word;
        if (!(status >> word >> word >> word) || word == "Z")
            return true;
        usleep(10000);
    }
    return false;
}

} // namespace

TEST(Shell, OutputComesInLinesAndPieces) {
    EXPECT_EQ(pieces("printf 'a\\n\\nb'"), (std::vector<std::string>{"a\n", "\n", "b"}));
    EXPECT_EQ(pieces("printf 'a\\0b\\n'"), std::vector<std::string>{"ab\n"});
    const auto cut = pieces("printf '%0255d\\n%0300d\\n' 1 2");
    ASSERT_EQ(cut.size(), 4u);
    EXPECT_EQ(cut[0].size(), 255u);
    EXPECT_EQ(cut[1], "\n");
    EXPECT_EQ(cut[3].size(), 46u);
    EXPECT_TRUE(pieces("exit 3").empty());
    EXPECT_EQ(pieces("echo x; kill -9 $$"), std::vector<std::string>{"x\n"});
    EXPECT_TRUE(pieces("no-such-tool 2>/dev/null").empty());
}

TEST(Shell, CommandsGetACleanSurrounding) {
    setenv("LC_ALL", "xx_XX", 1);
    EXPECT_EQ(captureValue("echo $LC_ALL", "test ->"), "C");
    EXPECT_EQ(captureValue("cat; echo eof", "test ->"), "eof");
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
    EXPECT_EQ(captureValue("kill -TERM $$; echo still here", "test ->"), "");
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    EXPECT_EQ(captureJoined("printf 'a\\nb\\n'", "test ->", ","), "a,b");
    EXPECT_EQ(captureJoined("yes", "test ->", "", nullptr).size(), 256u);
}

TEST(Shell, NothingThatHangsIsWaitedForNorLeftBehind) {
    if (!enterSandbox())
        GTEST_SKIP() << SANDBOX_DENIED;
    const struct {
        const char* command; // prints the process that hangs
        int deadline;
        bool to_the_end; // or closed after the first line
    } cases[] = {{"echo $$; exec sleep 1000", 1, true},
                 {"echo $$; exec sleep 1000", 1, false},
                 {"sleep 1000 & echo $!", 60, true}};
    for (const auto& c : cases) {
        const auto start = steady_clock::now();
        std::string first, piece;
        {
            shell_capture shell(c.command, "test ->", c.deadline);
            ASSERT_TRUE(shell.readPiece(first));
            EXPECT_FALSE(c.to_the_end && shell.readPiece(piece));
        }
        EXPECT_LT(steady_clock::now() - start, seconds(20));
        EXPECT_TRUE(ends(std::stoi(first)));
    }
    EXPECT_EQ(datedLog("err"), std::vector<std::string>(2, "test ->  timed out"));
}
