// Fixture of the tests that talk to a BMC: a private /opt/norvik, a BMC, flags of a running agent.
#pragma once

#include "fake_bmc.h"
#include "sandbox.h"
#include "state/flags.h"
#include "state/schedule.h"

#include <fstream>
#include <gtest/gtest.h>
#include <memory>

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
        ASSERT_EQ(initialiseSchedules(), nullptr);
    }

    std::unique_ptr<FakeBmc> bmc;
};
