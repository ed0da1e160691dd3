// The KCS exchange against an interface that keeps to the BMC's side of the state machine, and
// against one that doesn't.
#include "kcs_linux.h"
#include "platform/platform.h"
#include "platform/simulated/kcs_interface.h"
#include "smipmi.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <numeric>
#include <pthread.h>
#include <string>
#include <thread>

using simulated::kcs_message;

namespace {

constexpr const char* EXIT_LINE = "\n [kcs] kcs_error_exit:\n";
constexpr const char* ERROR_LINES = "\n [kcs] kcs_error:\n\n [kcs] kcs_error_exit:\n";

kcs_message counting(std::size_t length, std::uint8_t first) {
    kcs_message bytes(length);
    std::iota(bytes.begin(), bytes.end(), first);
    return bytes;
}

class Exchange : public testing::Test {
  protected:
    void SetUp() override {
        setenv("VYN_SIM_TRANSPORT", "kcs", 1);
        kcs = {};
        KCS_DATA = 0xCA2;
        KCS_STATUS = 0xCA3;
        kcs.present = [] { return true; };
        kcs.deliver = [this](const kcs_message& message) { requests.push_back(message); };
        kcs.collect = [this] { return answer; };
    }

    // One exchange with room behind the frame that must stay untouched; fills `seconds` and
    // `printed`.
    int exchange(kcs_message request, int length) {
        request.resize(FRAME_SIZE + 1);
        response.assign(FRAME_SIZE + 64, 0xEE);
        testing::internal::CaptureStdout();
        const auto start = std::chrono::steady_clock::now();
        const int result = kcs_exchange(request.data(), response.data(), length, 0);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        seconds = taken.count();
        printed = testing::internal::GetCapturedStdout();
        EXPECT_EQ(kcs_message(64, 0xEE),
                  kcs_message(response.begin() + FRAME_SIZE, response.end()));
        return result;
    }

    void expectGoodExchange(std::size_t requestLength, std::size_t responseLength) {
        SCOPED_TRACE(std::to_string(requestLength) + " -> " + std::to_string(responseLength));
        const kcs_message request = counting(requestLength, 0x5E);
        answer = counting(responseLength, 0x61);
        requests.clear();
        EXPECT_EQ(0, exchange(request, static_cast<int>(requestLength)));
        EXPECT_EQ(std::vector<kcs_message>{request}, requests);
        const std::size_t stored = std::min<std::size_t>(responseLength, FRAME_SIZE);
        ASSERT_EQ(stored, static_cast<std::size_t>(resp_data_len));
        response.resize(stored);
        EXPECT_EQ(kcs_message(answer->begin(), answer->begin() + resp_data_len), response);
        EXPECT_EQ("", printed);
    }

    simulated::kcs_interface& kcs = simulated::kcs_behind_ports();
    std::vector<kcs_message> requests;
    std::optional<kcs_message> answer;
    kcs_message response;
    std::string printed;
    double seconds = 0;
};

} // namespace

TEST_F(Exchange, CarriesFramesOfEveryLength) {
    for (std::size_t length = 2; length <= FRAME_SIZE; ++length)
        expectGoodExchange(length, FRAME_SIZE + 2 - length);
    for (std::size_t length : {0u, 1u, 2u, 3u, 127u, 128u, 129u, 255u, 1024u})
        expectGoodExchange(2, length);
}

TEST_F(Exchange, RefusesFramesThatCannotBeSent) {
    for (int length : {-1, 0, FRAME_SIZE + 1}) {
        resp_data_len = 77;
        EXPECT_EQ(1, exchange({}, length));
        EXPECT_EQ(EXIT_LINE, printed);
        EXPECT_EQ(0, resp_data_len);
    }
    EXPECT_EQ(1, exchange({0x18}, 1)); // the BMC's length error
    EXPECT_EQ(ERROR_LINES, printed);
    EXPECT_TRUE(requests.empty());
    expectGoodExchange(2, 3);
}

TEST_F(Exchange, EndsAfterEveryFaultAndWorksAgain) {
    const auto fault = [](auto set) {
        simulated::kcs_faults faults;
        set(faults);
        return faults;
    };
    using faults = simulated::kcs_faults;
    const struct {
        const char* name;
        faults ordered;
        const char* printed;
        double atLeast; // seconds
        std::size_t delivered;
    } cases[] = {
        {"IBF stays set", fault([](faults& f) { f.ibf_stuck = true; }), EXIT_LINE, 0.9, 0},
        {"ERROR at start", fault([](faults& f) { f.error_at_start = true; }), ERROR_LINES, 0, 0},
        {"ERROR in frame", fault([](faults& f) { f.error_after_bytes = 3; }), ERROR_LINES, 0, 0},
        {"ERROR at the last byte", fault([](faults& f) { f.error_after_bytes = 6; }), ERROR_LINES,
         0, 0},
        {"ERROR in response", fault([](faults& f) { f.error_after_response_bytes = 2; }),
         ERROR_LINES, 0, 1},
        {"READ without a byte", fault([](faults& f) { f.silent_after = 0; }), EXIT_LINE, 0.9, 1},
        {"READ runs dry", fault([](faults& f) { f.silent_after = 4; }), EXIT_LINE, 0.9, 1},
        {"no closing byte", fault([](faults& f) { f.no_closing_byte = true; }), EXIT_LINE, 0.9, 1},
        {"response without end", fault([](faults& f) { f.endless = true; }), ERROR_LINES, 0, 1},
        {"abort refused", simulated::kcs_fault_named("abort-refused"), ERROR_LINES, 0, 0},
        {"abort without a byte", fault([](faults& f) {
             f.error_after_bytes = 3;
             f.silent_after = 0;
         }),
         ERROR_LINES, 0.9, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        answer = kcs_message(5, 0x11);
        kcs.faults = c.ordered;
        requests.clear();
        EXPECT_EQ(1, exchange(counting(6, 0x18), 6));
        EXPECT_EQ(c.printed, printed);
        EXPECT_EQ(c.delivered, requests.size());
        EXPECT_GE(seconds, c.atLeast);
        EXPECT_LE(seconds, c.atLeast + 5); // the machine may be busy
        kcs.faults = {};
        expectGoodExchange(4, 7);
    }
}

// A BMC that takes longer than a wait answers the exchange after next; its late answer is not
// taken for the answer to that.
TEST_F(Exchange, DropsALateAnswer) {
    EXPECT_EQ(1, exchange({0x18, 0x01}, 2));
    EXPECT_EQ(EXIT_LINE, printed);
    answer = kcs_message(20, 0xAA);
    platform::inb(0xCA3);
    expectGoodExchange(3, 4);
}

// Every wait ends although the caller's thread blocks all signals, and the mask stays as it was.
TEST_F(Exchange, TimesOutWhereSignalsAreBlocked) {
    kcs.faults.ibf_stuck = true;
    sigset_t all;
    sigfillset(&all);
    ASSERT_EQ(0, pthread_sigmask(SIG_BLOCK, &all, nullptr));
    std::thread([this] {
        EXPECT_EQ(1, exchange({0x18, 0x01}, 2));
        EXPECT_LE(seconds, 6);
        sigset_t after;
        pthread_sigmask(SIG_BLOCK, nullptr, &after);
        EXPECT_EQ(1, sigismember(&after, SIGALRM));
    }).join();
}

TEST_F(Exchange, PortsElsewhereFloat) {
    const struct {
        const char* transport;
        bool first, second; // which pair is there
        int opened;
    } cases[] = {{"kcs", true, false, 0},
                 {"kcs2", false, true, 0},
                 {"driver", false, false, 0},
                 {"none", false, false, -1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.transport);
        setenv("VYN_SIM_TRANSPORT", c.transport, 1);
        EXPECT_EQ(c.first, platform::inb(0xCA3) == 0);
        EXPECT_EQ(c.second, platform::inb(0xCAC) == 0);
        EXPECT_EQ(0xFF, platform::inb(0xCA4));
        EXPECT_EQ(c.opened, platform::io_open());
    }
}

// What each pair of ports leads to: attempts one and two take version 2.0, three takes 1.5.
TEST_F(Exchange, DetectsTheBmcInThreeAttempts) {
    const struct {
        const char* transport;
        std::uint8_t completion, version; // what the BMC answers
        int detected;
        unsigned dataPort;
    } cases[] = {{"none", 0x00, 0x02, 0x00, 0xCA2}, {"kcs", 0x00, 0x02, 0x02, 0xCA2},
                 {"kcs2", 0x00, 0x02, 0x02, 0xCA8}, {"kcs", 0x00, 0x51, 0x51, 0xCA2},
                 {"kcs2", 0x00, 0x51, 0x00, 0xCA2}, {"kcs", 0xC1, 0x02, 0x00, 0xCA2}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.transport << " " << int{c.version});
        setenv("VYN_SIM_TRANSPORT", c.transport, 1);
        answer = {0x1C, 0x01, c.completion, 0x20, 0x01, 0x09, 0x08, c.version, 0x9F};
        ipmi_ver = 0;
        BYTE data[RESPONSE_SIZE];
        DWORD length = 99;
        testing::internal::CaptureStdout();
        const bool there = std::string(c.transport) == "kcs" || c.detected != 0;
        EXPECT_EQ(there ? c.completion : TRANSPORT_FAILED,
                  runIpmiCmd(BMC_ADDRESS, NETFN_APP, CMD_GET_DEVICE_ID, nullptr, 0, data, &length));
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(there ? 6u : 0u, length);
        EXPECT_EQ(c.detected, ipmi_ver);
        EXPECT_EQ(c.dataPort, KCS_DATA);
        EXPECT_EQ(c.dataPort == 0xCA2 ? 0xCA3u : 0xCACu, KCS_STATUS);
    }
}
