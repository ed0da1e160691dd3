// What a completion code costs: nothing but what it answers, whichever it is and whatever it
// answers. Time-outs (0xC3) take the BMC for away until the next round.
#include "service/schedule.h"

#include "bmc/clear.h"
#include "bmc/request.h"
#include "bmc/time_stamp.h"
#include "bmc/watchdog.h"
#include "bmc_test.h"
#include "host/network_events.h"
#include "service/command_requests.h"
#include "simulator/bmc.h"
#include "storage/drive_events.h"
#include "system_info.h"
#include "text.h"

namespace {

// A kind of request: NetFn, command and, unless it has no data, its first byte. The one that
// comes after so many of them gets the code.
struct Kind {
    int request;
    int skipped = 0;
};

class Codes : public BmcTest {
  protected:
    void SetUp() override {
        BmcTest::SetUp();
        if (IsSkipped())
            return;
        sim.files.offered[0x09] = {bmcsim::capabilityFile(true, 28), -1, 0};
        sim.files.offered[0x0B] = {bmcsim::driveMapFile({{"S1", 1}}), -1, 0};
        sim.watchdog.answersOld = true;
        sim.sel.clockBase = 0x61FF000A;
        session = newSession(sim);
        for (const unsigned each : {0x0402U, 0x0658U, 0x0659U, 0x0A48U, 0x30A0U, 0x30B3U, 0x30B6U})
            bmc->handle(static_cast<BYTE>(each >> 8), static_cast<BYTE>(each),
                        [this](const FakeBmc::Request& request) { return answered(request); });
    }
    Bytes answered(const FakeBmc::Request& request) {
        const int first = request.data.empty() ? 0 : request.data[0];
        const int whole = request.netFn << 16 | request.cmd << 8 | first;
        if (whole == faulty.request && faulty.skipped-- == 0)
            sim.faults.orders.push_back({{}, bmcsim::FaultKind::CODE, {code}, 0, 1});
        return answerRequest(sim, session, 0, request.netFn, request.cmd, request.data);
    }
    // Each code for a kind of request; `run` gets it, and says what follows.
    template <class Run>
    void forEachCode(std::initializer_list<Kind> kinds, Run run) {
        for (const Kind& kind : kinds)
            for (int value = 1; value < 256 && !HasFailure(); ++value) {
                SCOPED_TRACE(testing::Message() << std::hex << "request " << kind.request
                                                << " after " << kind.skipped << ", code " << value);
                faulty = kind, code = static_cast<BYTE>(value);
                bmc->forget();
                tryBmcAgain();
                run(kind);
                EXPECT_LT(faulty.skipped, 0) << "no such request";
                EXPECT_EQ(sim.ledger.complaints, Lines());
            }
    }
    bool timedOut() const {
        return code == 0xC3;
    }
    std::string stampTold() const {
        return storedUnder(sim.parameters, 202).texts.at(0);
    }

    bmcsim::Bmc sim;
    bmcsim::Session session;
    Kind faulty{};
    BYTE code = 0;
};

TEST_F(Codes, OneProbeDoesNotCostTheNext) {
    const Lines steps{"prepare file download fail", "prepare file download done fail",
                      "file download fail", "file download done fail"};
    const auto probes = [&](const Kind& kind) {
        std::remove("/opt/norvik/vyn.hdd.ini");
        beginMonitoring();
        const bool download = (kind.request >> 8) == 0x30A0, map = kind.skipped == 1;
        EXPECT_EQ(bNVMe, download && !map ? 0 : 1);
        EXPECT_EQ(fileText("/opt/norvik/vyn.hdd.ini"),
                  download && map && kind.request != 0x30A008 ? "" : "Hdd count,1\nS1,1\n");
        EXPECT_EQ(watchdogResetFreq, WATCHDOG_RESET_FREQ_ENABLED);
        EXPECT_EQ(watchdogCmd, download || timedOut() ? 0xB6 : 0xB3);
        if (download) {
            EXPECT_EQ(datedLog("err").back(),
                      (map ? "isSupportedSaveBiosHdd ->  " : "isSupportedNVMe ->  ") +
                          steps.at(static_cast<std::size_t>(kind.request - 0x30A005)));
        }
    };
    forEachCode({{0x30A005}, {0x30A006}, {0x30A007}, {0x30A008}, {0x30B602}}, probes);
    forEachCode({{0x30A005, 1}, {0x30A006, 1}, {0x30A007, 1}, {0x30A008, 1}}, probes);
}

TEST_F(Codes, TheRestIsBlankedAllTheSame) {
    const std::string zero(2, '\0');
    const std::vector<FakeBmc::Upload> all{
        {192, -1, ""},   {193, -1, ""},   {194, -1, zero}, {196, -1, ""}, {197, -1, ""},
        {198, -1, zero}, {205, -1, zero}, {200, -1, zero}, {203, -1, ""}, {204, -1, ""},
        {207, 255, ""},  {208, 255, ""},  {202, -1, ""}};
    forEachCode({{0x0658C0}, {0x0658C4}, {0x0658CA}, {0x0658CC}}, [&](const Kind&) {
        EXPECT_EQ(clearData(), 0);
        EXPECT_EQ(bmc->uploads(), all);
    });
}

TEST_F(Codes, WithoutTheClockATimeStampIsZero) {
    forEachCode({{0x0A4800}, {0x0658CA}}, [&](const Kind& kind) {
        printTimeStamp();
        EXPECT_EQ(bmcAway(), timedOut());
        if (kind.request == 0x0A4800 && !timedOut()) {
            EXPECT_EQ(stampTold(), std::string(4, '\0'));
        }
        tryBmcAgain();
        printTimeStamp();
        EXPECT_EQ(stampTold(), std::string("\x0A\0\xFF\x61", 4));
        const std::string log = fileText("/opt/norvik/vyn.log"); // begun anew
        EXPECT_EQ(log.rfind("Time stamp -> 20", 0), 0U);
        EXPECT_EQ(log.substr(log.find('\n') + 1),
                  "SEL Time stamp 1 ->  a\nSEL Time stamp 2 ->  0\n"
                  "SEL Time stamp 3 ->  ff\nSEL Time stamp 4 ->  61\n");
    });
}

// Two links and two drives change; the first event is refused.
TEST_F(Codes, ARefusedEventIsToldAgainAtTheNextPass) {
    bool well = true, drives_first = false;
    const auto tellLinks = [&] {
        for (const char* name : {"1;;em1;;;;;;;;;", "2;;em2;;;;;;;;;"}) {
            list record{};
            copyText(record.parm, name + std::string(well ? "up;" : "down;"));
            addNetworkSELRecord(&record);
        }
    };
    const auto pass = [&] {
        tryBmcAgain();
        if (!drives_first)
            tellLinks();
        resetDrivePresenceCheck();
        for (const char* number : {"0", "1"}) {
            list item{};
            copyText(item.parm, std::string("HD;/dev/ada") + number + (well ? ":OK" : ":Fail") +
                                    ":S:F;" + number + ";");
            trackDrive(item, true);
        }
        checkDrivePresence(storage_items());
        if (drives_first)
            tellLinks();
        static_first_init = 0;
        return sim.sel.records.size();
    };
    static_first_init = 1;
    pass();
    for (const bool which : {false, true}) {
        drives_first = which;
        const std::string title = which ? "send Smart SEL " : "send Lan SEL ";
        forEachCode({{0x040241}}, [&](const Kind&) {
            sim.sel.records.clear();
            well = !well;
            EXPECT_EQ(pass(), timedOut() ? 0U : 3U);
            EXPECT_EQ(datedLog("err").back(),
                      title + (code == 0x80   ? "  operation not support for this record type"
                               : code == 0x81 ? "  cannot execute command, SEL erase in progress"
                                              : "fail, cCode ->  " + std::to_string(code)));
            EXPECT_EQ(pass(), 4U);
            EXPECT_EQ(datedLog("com").back(),
                      (which == timedOut() ? "send Lan SEL   done" : "send Smart SEL   done"));
            EXPECT_EQ(pass(), 4U);
        });
    }
}

// The reset thread comes to kick a timer that runs.
TEST_F(Codes, TheWatchdogIsStartedAndKickedAllTheSame) {
    watchdogResetFreq = 0;
    bmc->handle(0x30, 0xB6, [this](const FakeBmc::Request& request) {
        const Bytes answer = answered(request);
        if (faulty.skipped < 0 && request.data[0] == 0x01 && answer[0] == 0)
            setStopFlag(1);
        return answer;
    });
    forEachCode({{0x30B601}, {0x30B602}, {0x30B603}}, [&](const Kind&) {
        setStopFlag(0);
        sim.watchdog.running = false;
        watchdog_reset_handler(nullptr);
        EXPECT_TRUE(sim.watchdog.running && watchdogArmed());
    });
}

TEST_F(Codes, ALostAnswerDoesNotLeaveTheWatchdogOn) {
    forEachCode({{0x30B603}}, [&](const Kind&) {
        sim.watchdog.running = true;
        switchWatchdogOff();
        EXPECT_EQ(sim.watchdog.running, !timedOut());
    });
}

// What the reset thread sends when a stop comes during its first, second or third request. The
// stopping process switches the timer off: from then on nothing may be sent.
TEST_F(Codes, NothingIsSentToTheWatchdogUnderAStop) {
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
        std::vector<Bytes> wanted(pass.begin(),
                                  pass.begin() + static_cast<std::ptrdiff_t>(requests));
        if (requests == 2) // it may have been switched off already
            wanted.push_back({0x03, 0x00, 0x00});
        EXPECT_EQ(bmc->sent(0x30, 0xB6), wanted);
    }
}

// Opening, fetch, acknowledgement, result and release of a command, in several chunks: whichever is
// refused, it is served in this round or in the next.
TEST_F(Codes, ACommandIsServedAllTheSame) {
    bmc->handle(0x06, 0x58, [this](const FakeBmc::Request& request) {
        setStopFlag(1); // ends the thread behind the round under way
        return answered(request);
    });
    const auto round = [] {
        setStopFlag(0);
        command_request_handler(nullptr);
    };
    const std::string text = "request;" + std::string(300, 'k') + ";\x04";
    const auto serve = [&](const Kind& kind) {
        const std::size_t released = sim.slot.released;
        postCommand(sim.slot, sim.ledger, {207, 4, text});
        round();
        const bool done =
            kind.request == 0x0658D0 && kind.skipped == 1; // not to be asked for again
        if (!done && sim.slot.released == released)
            round();
        EXPECT_EQ(sim.slot.released, released + 1);
        round(); // with nothing to do
        EXPECT_TRUE(sim.slot.queue.empty());
    };
    forEachCode({{0x0658D0}, {0x065910}, {0x065910, 9}, {0x0658CF}, {0x0658D0, 1}}, serve);
    forEachCode({{0x0658CF, 1}}, serve);
}

} // namespace
