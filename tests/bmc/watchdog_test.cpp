#include "bmc/watchdog.h"

#include "bmc_test.h"

using WatchdogTest = BmcTest;

TEST_F(WatchdogTest, ATimerSwitchedOffByAStopStaysOff) {
    bmc->handle(0x30, 0xB6, [](const auto&) {
        setStopFlag(1);
        return Bytes{0x00, 0x00};
    });
    watchdog_reset_handler(nullptr);
    for (const Bytes& request : bmc->sent(0x30, 0xB6))
        EXPECT_NE(request.at(0), 0x03);
}
