#include "state/flags.h"

#include "sandbox.h"

#include <gtest/gtest.h>
#include <sys/shm.h>

TEST(Flags, ReadWriteAndMissingSegments) {
    if (!enterSandbox())
        GTEST_SKIP() << SANDBOX_DENIED;
    EXPECT_EQ(getStopFlag(), 1) << "a missing segment reads 1";
    setPauseFlag(-2);
    EXPECT_EQ(getPauseFlag(), -2);
    shmid_ds segment{};
    for (int i = 0; i < 1000; ++i)
        setPauseFlag(i & 1);
    ASSERT_EQ(shmctl(pause_shm->shm_id, IPC_STAT, &segment), 0);
    EXPECT_EQ(segment.shm_nattch, 1u) << "attachments do not pile up";
    EXPECT_EQ(segment.shm_perm.mode & 0777, 0666);
    shmctl(pause_shm->shm_id, IPC_RMID, nullptr);
    setPauseFlag(0);
    EXPECT_EQ(getPauseFlag(), 0) << "a removed segment is made anew";
}
