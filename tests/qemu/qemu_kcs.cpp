// The KCS exchange against hardware that somebody else wrote: QEMU's isa-ipmi-kcs, driven port by
// port without a guest. Its BMC is bmcsim.
#include "kcs_exchange.h"
#include "kcs_linux.h"
#include "platform/platform.h"
#include "qemu/line_child.h"
#include "simulator/core.h"
#include "smipmi.h"

#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <numeric>
#include <thread>
#include <unistd.h>

namespace {

using bmcsim::hexText;
using std::chrono::steady_clock;
using bytes = bmcsim::Bytes;

constexpr BYTE TEST_COMMAND = 0x77; // of NETFN_OEM; bmcsim has nothing of its own there

constexpr const char* EXIT_LINE = "\n [kcs] kcs_error_exit:\n";
constexpr const char* ERROR_LINES = "\n [kcs] kcs_error:\n\n [kcs] kcs_error_exit:\n";

line_child* machine = nullptr; // whose ports these are; null: they float

std::string ask(const std::string& command) {
    if (machine == nullptr)
        return "";
    machine->send(command);
    return machine->receive();
}

bytes counting(std::size_t length, std::size_t first) {
    bytes data(length);
    std::iota(data.begin(), data.end(), static_cast<BYTE>(first));
    return data;
}

class QemuKcs : public testing::Test {
  protected:
    void SetUp() override {
        if (std::system("command -v qemu-system-x86_64 >/dev/null") != 0)
            GTEST_SKIP() << "qemu-system-x86_64 is not installed";
        setenv("VYN_SIM_TRANSPORT", "kcs", 1); // no device node
        char folder[] = "/tmp/qemu_kcs.XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(folder));
        m_folder = folder;
        const std::string path = m_folder + "/bmc";
        ASSERT_TRUE(bmc.start({BMCSIM, "--listen", path}));
        ASSERT_NE("", bmc.receive()); // listening
        order("trace on");
        ASSERT_TRUE(qemu.start({"qemu-system-x86_64", "-accel", "tcg", "-display", "none", "-qtest",
                                "stdio", "-qtest-log", "none", "-nodefaults", "-boot", "n",
                                "-chardev", "socket,id=ipmi0,path=" + path + ",reconnect=1",
                                "-device", "ipmi-bmc-extern,chardev=ipmi0,id=bmc0", "-device",
                                "isa-ipmi-kcs,bmc=bmc0"}));
        machine = &qemu;
        ASSERT_TRUE(answersWithin(10));
    }
    void TearDown() override {
        machine = nullptr;
        if (!m_folder.empty() && std::system(("rm -rf " + m_folder).c_str()) != 0)
            ADD_FAILURE() << "left behind: " << m_folder;
    }

    // Gives bmcsim a command; returns the last line of its reply before the closing "ok".
    std::string order(const std::string& command) {
        bmc.send(command);
        std::string last, line;
        while ((line = bmc.receive()) != "ok") {
            last = line;
            if (line.empty() || line.compare(0, 5, "error") == 0) {
                ADD_FAILURE() << command << ": " << line;
                break;
            }
        }
        return last;
    }

    BYTE request(BYTE netFn, BYTE cmd, const bytes& data) {
        answer.assign(RESPONSE_SIZE, 0);
        DWORD length = 0;
        testing::internal::CaptureStdout();
        const auto start = steady_clock::now();
        const BYTE code = runIpmiCmd(BMC_ADDRESS, netFn, cmd, data.data(),
                                     static_cast<int>(data.size()), answer.data(), &length);
        seconds = std::chrono::duration<double>(steady_clock::now() - start).count();
        printed = testing::internal::GetCapturedStdout();
        answer.resize(length);
        return code;
    }

    // Asks for the device id until the BMC answers.
    bool answersWithin(int limit) {
        const auto deadline = steady_clock::now() + std::chrono::seconds(limit);
        while (steady_clock::now() < deadline) {
            if (request(NETFN_APP, CMD_GET_DEVICE_ID, {}) == 0 && ipmi_ver == 0x02)
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return false;
    }

    // Both sides see the bytes that the other has sent; what the frame can't hold is lost.
    void expectExchange(const bytes& data, const bytes& response) {
        SCOPED_TRACE(testing::Message() << data.size() << " -> " << response.size());
        order("log clear");
        order("answer 30/77 00 " + hexText(response));
        ASSERT_EQ(0, request(NETFN_OEM, TEST_COMMAND, data));
        const std::size_t stored = std::min<std::size_t>(response.size(), FRAME_SIZE - 3);
        ASSERT_EQ(hexText(bytes(response.data(), response.data() + stored)), hexText(answer));
        const std::string log = order("log");
        ASSERT_NE(std::string::npos, log.find("30/77 " + hexText(data) + " -> 00")) << log;
    }

    line_child bmc, qemu;
    bytes answer; // of the latest request
    std::string printed;
    double seconds = 0;

  private:
    std::string m_folder;
};

} // namespace

int platform::io_open() {
    return machine == nullptr ? -1 : 0;
}

std::uint8_t platform::inb(std::uint16_t port) {
    const std::string answer = ask("inb " + std::to_string(port));
    return answer.compare(0, 3, "OK ") == 0
               ? static_cast<std::uint8_t>(std::stoul(answer.substr(3), nullptr, 16))
               : std::uint8_t{0xFF};
}

void platform::outb(std::uint8_t value, std::uint16_t port) {
    ask("outb " + std::to_string(port) + " " + std::to_string(value));
}

// Every length both ways, past the sequence numbers that must be escaped and past 255.
TEST_F(QemuKcs, CarriesEveryLength) {
    for (std::size_t length = 0; length <= 126 && !HasFailure(); ++length)
        expectExchange(counting(length, 0x58 + length), counting(126 - length, 0x9A + length));
    for (const std::size_t length : {125u, 126u, 200u, 250u})
        expectExchange({0x01}, counting(length, 0x60));
    for (int i = 0; i < 250; ++i)
        ASSERT_EQ(0, request(NETFN_APP, CMD_GET_DEVICE_ID, {})) << i;
    EXPECT_EQ("", order("complaints"));
}

// What a dead predecessor may have left behind costs one request, which says so, and no more.
TEST_F(QemuKcs, RecoversFromEveryState) {
    constexpr int DATA = 0x100; // goes to the data port, others to the command port
    const struct {
        const char* name;
        std::vector<int> written;
        bool lost;
    } states[] = {
        {"ERROR", {KCS_GET_STATUS_ABORT}, true},
        {"WRITE", {KCS_WRITE_START}, true},
        {"WRITE with a byte", {KCS_WRITE_START, DATA | 0x18}, true},
        {"WRITE at its end", {KCS_WRITE_START, KCS_WRITE_END}, true},
        {"READ", {KCS_WRITE_START, DATA | 0x18, KCS_WRITE_END, DATA | 0x01}, true},
        {"a control code out of place", {KCS_WRITE_END}, true},
        {"data out of place", {DATA | 0x55}, false},
    };
    for (const auto& state : states) {
        SCOPED_TRACE(state.name);
        for (const int value : state.written)
            ((value & DATA) != 0 ? kcs_WriteData : kcs_WriteCommand)(static_cast<BYTE>(value));
        EXPECT_EQ(state.lost ? TRANSPORT_FAILED : 0, request(NETFN_APP, CMD_GET_DEVICE_ID, {}));
        EXPECT_EQ(state.lost ? ERROR_LINES : "", printed);
        EXPECT_EQ(0, request(NETFN_APP, CMD_GET_DEVICE_ID, {}));
    }
}

// QEMU answers for a silent BMC after 4 seconds, and for one that hangs up at once.
TEST_F(QemuKcs, SurvivesASickBmc) {
    const bytes deviceId = answer;
    const struct {
        const char* fault;
        BYTE code;
    } cases[] = {{"code C0 1", 0xC0},
                 {"attention 1", 0xC1},
                 {"double 1", 0xC1},
                 {"long 400 1", 0xC6},
                 {"drop 1", 0xD2},
                 {"silent 1", TRANSPORT_FAILED},
                 {"checksum 1", TRANSPORT_FAILED},
                 {"late 1500 1", TRANSPORT_FAILED}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        order(std::string("fault 30/77 ") + c.fault);
        EXPECT_EQ(c.code, request(NETFN_OEM, TEST_COMMAND, {0x01, 0x02}));
        const bool timed_out = c.code == TRANSPORT_FAILED;
        EXPECT_EQ(timed_out ? EXIT_LINE : "", printed);
        EXPECT_LT(seconds, 15); // most of it is the wait for a turn, on a busy machine
        EXPECT_TRUE(answersWithin(10));
        EXPECT_EQ(hexText(deviceId), hexText(answer));
    }
}
