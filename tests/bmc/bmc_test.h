// Fixture of the tests that talk to a BMC: a private /opt/norvik, a BMC, flags of a running agent.
#pragma once

#include "fake_bmc.h"
#include "sandbox.h"
#include "service/flags.h"
#include "service/locks.h"

#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

using Lines = std::vector<std::string>;

class BmcTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!enterSandbox())
            GTEST_SKIP() << SANDBOX_DENIED;
        bmc = std::make_unique<FakeBmc>();
        setStopFlag(0);
        setPauseFlag(0);
        setCurPauseFlag(0);
        ASSERT_EQ(init_mutex(), 0);
    }

    // Runs a thread body until `done` holds, then stops it by the flag and a wake-up.
    void runUntil(void* (*body)(void*), pthread_cond_t& condition, pthread_mutex_t& lock,
                  const std::function<bool()>& done) {
        std::thread worker(body, nullptr);
        EXPECT_TRUE(bmc->waitUntil(done));
        setStopFlag(1);
        wakeUp(condition, lock);
        worker.join();
        setStopFlag(0);
    }

    std::unique_ptr<FakeBmc> bmc;
};
