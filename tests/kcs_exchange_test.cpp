// The KCS exchange against an interface that keeps to the BMC's side of the state machine, and
// against one that doesn't.
#include "kcs_linux.h"
#include "platform/platform.h"
#include "platform/simulated/kcs_interface.h"
#include "smipmi.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <numeric>
#include <string>

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

    // One exchange, with room behind the frame that must stay untouched.
    int exchange(const kcs_message& sent) {
        kcs_message request = sent;
        request.resize(FRAME_SIZE + 1);
        response.assign(FRAME_SIZE + 64, 0xEE);
        requests.clear();
        testing::internal::CaptureStdout();
        const int result =
            kcs_exchange(request.data(), response.data(), static_cast<int>(sent.size()), 0);
        printed = testing::internal::GetCapturedStdout();
        EXPECT_EQ(64, std::count(response.begin() + FRAME_SIZE, response.end(), 0xEE));
        return result;
    }

    void expectGoodExchange(std::size_t requestLength, std::size_t responseLength) {
        SCOPED_TRACE(std::to_string(requestLength) + " -> " + std::to_string(responseLength));
        const kcs_message request = counting(requestLength, 0x5E);
        answer = counting(responseLength, 0x61);
        EXPECT_EQ(0, exchange(request));
        EXPECT_EQ(std::vector<kcs_message>{request}, requests);
        EXPECT_EQ(std::min<int>(static_cast<int>(responseLength), FRAME_SIZE), resp_data_len);
        EXPECT_TRUE(
            std::equal(response.begin(), response.begin() + resp_data_len, answer->begin()));
        EXPECT_EQ("", printed);
    }

    simulated::kcs_interface& kcs = simulated::kcs_behind_ports();
    std::vector<kcs_message> requests;
    std::optional<kcs_message> answer;
    kcs_message response;
    std::string printed;
};

} // namespace

TEST_F(Exchange, CarriesFramesOfEveryLength) {
    for (std::size_t length = 2; length <= FRAME_SIZE; ++length)
        expectGoodExchange(length, FRAME_SIZE + 2 - length);
    for (std::size_t length : {0u, 1u, 2u, 3u, 127u, 128u, 129u, 255u, 1024u})
        expectGoodExchange(2, length);
}

TEST_F(Exchange, EndsAfterEveryFaultAndWorksAgain) {
    const struct {
        const char *fault, *printed;
        double atLeast; // seconds
        std::size_t delivered;
        int error_in_response = -1;
        bool mute = false; // the abort is not told why
    } cases[] = {
        {"ibf-stuck", EXIT_LINE, 0.9, 0},
        {"error-at-start", ERROR_LINES, 0, 0},
        {"error-mid-frame", ERROR_LINES, 0, 0},
        {"error-mid-frame", ERROR_LINES, 0.9, 0, -1, true},
        {"abort-refused", ERROR_LINES, 0, 0},
        {"error-in-response", ERROR_LINES, 0, 1, 2},
        {"read-without-byte", EXIT_LINE, 0.9, 1},
        {"no-closing-byte", EXIT_LINE, 0.9, 1},
        {"endless-response", ERROR_LINES, 0, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        answer = kcs_message(5, 0x11);
        kcs.faults = simulated::kcs_fault_named(c.fault);
        kcs.faults.error_after_response_bytes = c.error_in_response;
        if (c.mute)
            kcs.faults.silent_after = 0;
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(1, exchange(counting(6, 0x18)));
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        EXPECT_EQ(c.printed, printed);
        EXPECT_EQ(c.delivered, requests.size());
        EXPECT_GE(taken.count(), c.atLeast);
        EXPECT_LE(taken.count(), c.atLeast + 5); // the machine may be busy
        kcs.faults = {};
        expectGoodExchange(4, 7);
    }
}

// A BMC that takes longer than a wait answers the exchange after next; its late answer is not
// taken for the answer to that.
TEST_F(Exchange, DropsALateAnswer) {
    EXPECT_EQ(1, exchange({0x18, 0x01}));
    EXPECT_EQ(EXIT_LINE, printed);
    answer = kcs_message(20, 0xAA);
    platform::inb(0xCA3);
    expectGoodExchange(3, 4);
}

// What each pair of ports leads to: attempts one and two take version 2.0, three takes 1.5.
TEST_F(Exchange, DetectsTheBmcInThreeAttempts) {
    const struct {
        const char* transport;
        std::uint8_t completion, version; // what the BMC answers
        int detected;
        unsigned dataPort;
        BYTE code; // of the request afterwards
    } cases[] = {{"kcs2", 0x00, 0x02, 0x02, 0xCA8, 0x00},
                 {"kcs", 0x00, 0x51, 0x51, 0xCA2, 0x00},
                 {"kcs2", 0x00, 0x51, 0x00, 0xCA2, TRANSPORT_FAILED},
                 {"kcs", 0xC1, 0x02, 0x00, 0xCA2, 0xC1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.transport << " " << int{c.version});
        setenv("VYN_SIM_TRANSPORT", c.transport, 1);
        answer = {0x1C, 0x01, c.completion, 0x20, 0x01, 0x09, 0x08, c.version, 0x9F};
        ipmi_ver = 0;
        BYTE data[RESPONSE_SIZE];
        DWORD length = 99;
        EXPECT_EQ(c.code,
                  runIpmiCmd(BMC_ADDRESS, NETFN_APP, CMD_GET_DEVICE_ID, nullptr, 0, data, &length));
        EXPECT_EQ(c.code == TRANSPORT_FAILED ? 0u : 6u, length);
        EXPECT_EQ(c.detected, ipmi_ver);
        EXPECT_EQ(c.dataPort, KCS_DATA);
    }
}
