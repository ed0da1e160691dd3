#include "bmc/watchdog.h"

#include "bmc_test.h"

using WatchdogTest = BmcTest;

// What the reset thread sends when a stop comes during its first, second or third request. The
// stopping process switches the timer off: from then on nothing may be sent.
TEST_F(WatchdogTest, NothingIsSentUnderAStop) {
    const std::vector<Bytes> pass{{0x02}, {0x03, 0x3C, 0x00}, {0x01}};
    for (std::size_t requests = 1; requests <= pass.size(); ++requests) {
        setStopFlag(0);
        bmc->forget();
        bmc->handle(0x30, 0xB6, [&](const auto&) {
            if (bmc->sent(0x30, 0xB6).size() == requests)
                setStopFlag(1);
            return Bytes{0x00, 0x00};
        });
        watchdog_reset_handler(nullptr);
        const auto wanted = pass.begin() + static_cast<std::ptrdiff_t>(requests);
        EXPECT_EQ(bmc->sent(0x30, 0xB6), std::vector<Bytes>(pass.begin(), wanted));
    }
}
