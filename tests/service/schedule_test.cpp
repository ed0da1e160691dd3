// What a completion code costs at the start and at the end of the service: nothing but what it
// answers, whichever it is.
#include "service/schedule.h"

#include "bmc/clear.h"
#include "bmc/request.h"
#include "bmc/watchdog.h"
#include "bmc_test.h"
#include "simulator/oem.h"
#include "system_info.h"

namespace {

class Codes : public BmcTest {
  protected:
    void SetUp() override {
        BmcTest::SetUp();
        Bytes capability(28, 0xFF);
        files.offered[0x09] = {capability, -1, 0};
        files.offered[0x0B] = {bmcsim::driveMapFile({{"S1", 1}}), -1, 0};
        bmc->handle(0x30, 0xA0, [this](const auto& request) {
            return answered(request.data.at(0), bmcsim::fileCommand(files, ledger, request.data));
        });
        for (const std::uint8_t watchdog : {CMD_OEM_WATCHDOG, CMD_OEM_WATCHDOG_OLD})
            bmc->handle(0x30, watchdog, [this, watchdog](const auto& request) {
                return answered(watchdog << 8 | request.data.at(0), {0x00, 0x01});
            });
        bmc->handle(0x06, 0x58,
                    [this](const auto& request) { return answered(request.data.at(0), {0x00}); });
    }
    // The first request of the kind at fault gets the code.
    Bytes answered(int kind, Bytes usual) {
        const bool hit = kind == faulty && !std::exchange(met, true);
        return hit ? Bytes{code} : usual;
    }
    // Each code for a kind of request; `run` gets it, and says what follows.
    template <class Run>
    void forEachCode(std::initializer_list<int> kinds, Run run) {
        for (const int kind : kinds)
            for (int value = 1; value < 256 && !HasFailure(); ++value) {
                SCOPED_TRACE(testing::Message() << "kind " << kind << " code " << value);
                faulty = kind, code = static_cast<std::uint8_t>(value), met = false;
                bmc->forget();
                tryBmcAgain();
                run(kind);
                EXPECT_TRUE(met);
            }
    }

    bmcsim::Files files;
    bmcsim::Ledger ledger;
    int faulty = 0;
    std::uint8_t code = 0;
    bool met = false;
};

TEST_F(Codes, OneProbeDoesNotCostTheNext) {
    forEachCode({0x05, 0x06, 0x07, 0x08, 0xB602}, [&](int kind) {
        beginMonitoring();
        EXPECT_EQ(bNVMe, kind == 0xB602 ? 1 : 0);
        EXPECT_EQ(fileText("/opt/norvik/vyn.hdd.ini"), "Hdd count,1\nS1,1\n");
        EXPECT_EQ(watchdogResetFreq, WATCHDOG_RESET_FREQ_ENABLED);
        EXPECT_EQ(watchdogCmd, kind == 0xB602 ? 0xB3 : 0xB6);
        std::remove("/opt/norvik/vyn.hdd.ini");
    });
}

TEST_F(Codes, TheRestIsBlankedAllTheSame) {
    forEachCode({192, 196, 202, 204}, [&](int kind) {
        clearData();
        std::size_t others = 0;
        for (const FakeBmc::Upload& upload : bmc->uploads())
            others += upload.selector != kind ? 1 : 0;
        EXPECT_EQ(others, 12U);
    });
}

} // namespace
