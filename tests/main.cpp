// Runs every test in a process of its own, so that process-wide state starts afresh for it: of as
// many shards as there are tests each holds one.
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const bool one = testing::GTEST_FLAG(filter).find('*') == std::string::npos;
    if (one || testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    const int count = testing::UnitTest::GetInstance()->total_test_count();
    int failed = 0;
    for (int i = 0; i < count; i++) {
        const pid_t child = fork();
        if (child == 0) {
            setenv("GTEST_TOTAL_SHARDS", std::to_string(count).c_str(), 1);
            setenv("GTEST_SHARD_INDEX", std::to_string(i).c_str(), 1);
            return RUN_ALL_TESTS();
        }
        int status = 1;
        waitpid(child, &status, 0);
        failed += status != 0 ? 1 : 0;
    }
    std::printf("%d of %d tests failed\n", failed, count);
    return failed == 0 ? 0 : 1;
}
