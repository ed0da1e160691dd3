#include "bmc/watchdog.h"

#include "bmc/restart_monitor.h"
#include "bmc_test.h"

namespace {

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

TEST_F(WatchdogTest, ARestartedBmcGetsTheStaticPass) {
    const Bytes get{0xA9, 0x00}, set{0xA9, 0x01};
    struct {
        std::vector<Bytes> answers, requests;
        int flag;
        Lines errors;
    } const cases[] = {
        {{{0x00, 0x00}, {0x00}}, {get, set}, 1, {}},
        {{{0x00, 0x01}}, {get}, 0, {}},
        {{{0x00}}, {get}, 0, {}},
        {{{0xC1}}, {get}, 0, {"get bmc restart clean  command fail"}},
        {{{0x00, 0x00}, {0xC1}}, {get, set}, 1, {"set bmc restart clean  command fail"}},
    };
    Lines errors;
    for (const auto& c : cases) {
        bmc->forget();
        static_flag = 0;
        bmc->queue(0x30, 0x70, c.answers);
        runUntil(bmc_restart_monitor_handler, bmc_restart_monitor_condition,
                 bmc_restart_monitor_lock,
                 [&] { return bmc->sent(0x30, 0x70).size() >= c.requests.size(); });
        EXPECT_EQ(bmc->sent(0x30, 0x70), c.requests);
        EXPECT_EQ(static_flag, c.flag);
        errors.insert(errors.end(), c.errors.begin(), c.errors.end());
        EXPECT_EQ(datedLog("err"), errors);
    }
}

} // namespace
