// The request channel over the driver, with a BMC that misbehaves.
#include "fake_bmc.h"
#include "kcs_linux.h"
#include "platform/simulated/kcs_interface.h"
#include "sandbox.h"
#include "smipmi.h"
#include "tools/program.h"

#include <gtest/gtest.h>

namespace {

constexpr BYTE OEM_COMMAND = 0x11;

struct reply {
    BYTE code = 0;
    Bytes data;
};

reply request(const Bytes& data = {}) {
    BYTE response[RESPONSE_SIZE];
    DWORD length = 99;
    reply result;
    result.code = runIpmiCmd(BMC_ADDRESS, NETFN_OEM, OEM_COMMAND, data.data(),
                             static_cast<int>(data.size()), response, &length);
    result.data.assign(response, response + length);
    return result;
}

} // namespace

TEST(Channel, RequestsAndResponsesKeepTheirBounds) {
    FakeBmc bmc;
    bmc.handle(NETFN_OEM, OEM_COMMAND, [](const FakeBmc::Request& r) {
        Bytes echo(1 + r.data.size());
        std::copy(r.data.begin(), r.data.end(), echo.begin() + 1);
        return echo;
    });
    bmc.interruptions = 3;
    EXPECT_EQ(request({}).data, Bytes{});
    EXPECT_EQ(request({0xA0, 0xA1, 0xAA, 0x00}).data, (Bytes{0xA0, 0xA1, 0xAA, 0x00}));
    EXPECT_EQ(request(Bytes(126, 0xA5)).data, Bytes(125, 0xA5)) << "what a frame holds";
    EXPECT_EQ(request(Bytes(127)).code, TRANSPORT_FAILED);
    EXPECT_EQ(bmc.sent(NETFN_APP, CMD_GET_DEVICE_ID).size(), 1u);
    EXPECT_EQ(bmc.sent(NETFN_OEM, OEM_COMMAND).size(), 3u);
    bmc.queue(NETFN_OEM, OEM_COMMAND, {Bytes(1001, 0x00), {0xC1, 0x01, 0x02}, Bytes(2000, 0x00)});
    EXPECT_EQ(request().data.size(), 125u);
    EXPECT_EQ(request().code, 0xC1);
    EXPECT_EQ(request().data.size(), 125u) << "longer than the driver's buffer";
}

TEST(Channel, APicmgBoardTellsItsAddress) {
    FakeBmc bmc;
    bmc.answer(NETFN_PICMG, 0x00, {0x00, 0x00, 0x22, 0x00});
    bmc.answer(NETFN_PICMG, 0x01, {0x00, 0x00, 0x41, 0x82});
    request();
    EXPECT_EQ(ipmi_open_intf.my_addr, 0x82u);
    EXPECT_EQ(bmc.sent(NETFN_PICMG, 0x00), std::vector<Bytes>{Bytes{0x00}});
}

TEST(Channel, LeavesThePortsToADriverThatIsNotItsOwn) {
    if (!enterSandbox())
        GTEST_SKIP() << SANDBOX_DENIED;
    setenv("VYN_SIM_TRANSPORT", "kcs", 1); // no device node of its own
    bool touched = false;
    simulated::kcs_behind_ports().present = [&] { return touched = true; };
    tools.list_folder = [](const char* path) {
        return path == std::string("/dev") ? std::vector<std::string>{"ipmi1", "null"}
                                           : std::vector<std::string>();
    };
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(request().code, TRANSPORT_FAILED);
    EXPECT_FALSE(touched);
    EXPECT_EQ(datedLog("err"),
              std::vector<std::string>{
                  "IPMI ports ->  /dev/ipmi1 belongs to a driver, the ports are left alone"});
}
