// The request channel over the driver transport, with a BMC that misbehaves.

#include "fake_bmc.h"
#include "kcs_linux.h"
#include "sandbox.h"
#include "smipmi.h"
#include "tools/program.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <pthread.h>

namespace {

constexpr BYTE OEM_COMMAND = 0x11;

struct reply {
    BYTE code = 0;
    Bytes data;
};

reply request(const Bytes& data = {}, BYTE cmd = OEM_COMMAND) {
    BYTE response[RESPONSE_SIZE];
    DWORD length = 99;
    reply result;
    result.code = runIpmiCmd(BMC_ADDRESS, NETFN_OEM, cmd, data.data(),
                             static_cast<int>(data.size()), response, &length);
    result.data.assign(response, response + length);
    return result;
}

std::ptrdiff_t openDescriptors() {
    using std::filesystem::directory_iterator;
    return std::distance(directory_iterator("/proc/self/fd"), directory_iterator());
}

} // namespace

TEST(Channel, RequestAndResponseTravelWhole) {
    FakeBmc bmc;
    const Bytes longest(126, 0xA5);
    bmc.handle(NETFN_OEM, OEM_COMMAND, [](const FakeBmc::Request& r) {
        Bytes echo(1 + r.data.size());
        std::copy(r.data.begin(), r.data.end(), echo.begin() + 1);
        return echo;
    });
    EXPECT_EQ(request({}).data, Bytes{});
    EXPECT_EQ(request({0xA0, 0xA1, 0xAA, 0x00}).data, (Bytes{0xA0, 0xA1, 0xAA, 0x00}));
    EXPECT_EQ(request(longest).data, Bytes(125, 0xA5)) << "a frame holds 125 bytes of data";
    EXPECT_EQ(request(Bytes(127)).code, TRANSPORT_FAILED);
    EXPECT_EQ(ipmi_ver, 0x02);
    EXPECT_EQ(KCS_DATA, 0xCA2u);
    EXPECT_EQ(bmc.sent(NETFN_APP, CMD_GET_DEVICE_ID).size(), 1u);
    EXPECT_EQ(bmc.sent(NETFN_OEM, OEM_COMMAND).size(), 3u);
}

TEST(Channel, OversizedAndRefusedAnswersAreBounded) {
    FakeBmc bmc;
    Bytes oversized(1001, 0x77);
    oversized[0] = 0x00;
    bmc.queue(NETFN_OEM, OEM_COMMAND, {oversized, {0xC1, 0x01, 0x02}, Bytes(2000, 0x00)});
    EXPECT_EQ(request().data, Bytes(125, 0x77));
    EXPECT_EQ(request().code, 0xC1);
    EXPECT_EQ(request().data.size(), 125u) << "longer than the driver's buffer";
}

TEST(Channel, ALateAnswerIsNotTakenForTheNextOne) {
    setenv("VYN_SIM_TIMEOUT_MS", "100", 1);
    FakeBmc bmc;
    bmc.handle(NETFN_OEM, OEM_COMMAND, [](const FakeBmc::Request& r) {
        if (r.data[0] == 1)
            std::this_thread::sleep_for(std::chrono::milliseconds(200)); // the lateness itself
        return Bytes{0x00, r.data[0]};
    });
    EXPECT_EQ(request({1}).code, 0xC3);
    setenv("VYN_SIM_TIMEOUT_MS", "5000", 1);
    EXPECT_EQ(request({2}).data, Bytes{2});
    EXPECT_EQ(request({3}).data, Bytes{3});
}

TEST(Channel, ASignalDuringTheWaitLosesNothing) {
    FakeBmc bmc;
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGHUP, &action, nullptr);
    const pthread_t requester = pthread_self();
    bmc.handle(NETFN_OEM, OEM_COMMAND, [&](const FakeBmc::Request& r) {
        pthread_kill(requester, SIGHUP);
        return Bytes{0x00, r.data[0]};
    });
    for (BYTE i = 0; i < 50; ++i)
        EXPECT_EQ(request({i}).data, Bytes{i});
}

TEST(Channel, FailedOpensLeakNothing) {
    setenv("VYN_SIM_TRANSPORT", "none", 1);
    request();
    const std::ptrdiff_t before = openDescriptors();
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(request().code, TRANSPORT_FAILED);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(ipmi_open_intf.fd, -1);

    setenv("VYN_SIM_TRANSPORT", "driver", 1);
    FakeBmc bmc;
    bmc.answer(NETFN_OEM, OEM_COMMAND, {0x00, 0x42});
    EXPECT_EQ(request().data, Bytes{0x42}) << "a later request opens the device";
}

TEST(Channel, APicmgBoardTellsItsAddress) {
    FakeBmc bmc;
    bmc.answer(NETFN_PICMG, 0x00, {0x00, 0x00, 0x22, 0x00});
    bmc.answer(NETFN_PICMG, 0x01, {0x00, 0x00, 0x41, 0x82});
    bmc.answer(NETFN_OEM, OEM_COMMAND, {0x00});
    EXPECT_EQ(request().code, 0x00);
    EXPECT_EQ(ipmi_open_intf.my_addr, 0x82u);
    EXPECT_EQ(bmc.sent(NETFN_PICMG, 0x00), std::vector<Bytes>{Bytes{0x00}});
}

TEST(Channel, LeavesThePortsToADriverThatIsNotItsOwn) {
    if (!enterSandbox())
        GTEST_SKIP() << SANDBOX_DENIED;
    FakeBmc bmc;
    setenv("VYN_SIM_TRANSPORT", "kcs", 1); // no device node of its own
    tools.list_folder = [](const char* path) {
        return path == std::string("/dev") ? std::vector<std::string>{"ipmi1", "null"}
                                           : std::vector<std::string>();
    };
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(request().code, TRANSPORT_FAILED);
    EXPECT_TRUE(bmc.sent(NETFN_APP, CMD_GET_DEVICE_ID).empty());
    EXPECT_EQ(datedLog("err"),
              std::vector<std::string>{
                  "IPMI ports ->  /dev/ipmi1 belongs to a driver, the ports are left alone"});
}
