// The KCS exchange against hardware that somebody else wrote: QEMU's isa-ipmi-kcs, driven port by
// port without a guest, in front of the BMC simulator.
#include "bmc/parameter_upload.h"
#include "kcs_exchange.h"
#include "kcs_linux.h"
#include "platform/platform.h"
#include "smipmi.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr const char* ERROR_LINES = "\n [kcs] kcs_error:\n\n [kcs] kcs_error_exit:\n";

int machine = -1; // the machine whose ports these are; -1: they float

// What the machine answers to a line; empty when it has ended or is silent for 10 s.
std::string ask(const std::string& line) {
    std::string answer;
    if (send(machine, (line + "\n").data(), line.size() + 1, MSG_NOSIGNAL) > 0)
        for (char byte = 0; recv(machine, &byte, 1, 0) == 1 && byte != '\n';)
            answer += byte;
    return answer;
}

// A machine and its BMC: the process group of the two, which ends without the test too.
pid_t startMachine(const std::string& folder) {
    const std::string command =
        "limit='timeout --foreground 100'; $limit " BMCSIM " --listen " + folder +
        "/bmc </dev/null >/dev/null &"
        " exec $limit qemu-system-x86_64 -accel tcg -display none -qtest stdio -qtest-log none"
        " -nodefaults -boot n -device ipmi-bmc-extern,chardev=ipmi0,id=bmc0"
        " -device isa-ipmi-kcs,bmc=bmc0 2>/dev/null -chardev socket,id=ipmi0,reconnect=1,path=" +
        folder + "/bmc";
    int ends[2] = {-1, -1};
    EXPECT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends));
    const pid_t group = fork();
    if (group == 0) {
        setpgid(0, 0);
        dup2(ends[1], STDIN_FILENO);
        dup2(ends[1], STDOUT_FILENO);
        execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        _exit(127);
    }
    close(ends[1]);
    machine = ends[0];
    const timeval limit{10, 0};
    setsockopt(machine, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    return group;
}

std::string printed; // under the latest request

BYTE askDeviceId() {
    BYTE answer[RESPONSE_SIZE];
    DWORD length = 0;
    testing::internal::CaptureStdout();
    const BYTE code =
        runIpmiCmd(BMC_ADDRESS, NETFN_APP, CMD_GET_DEVICE_ID, nullptr, 0, answer, &length);
    printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(code == 0 ? 15U : 0U, length);
    return code;
}

// Asks for the device id until the BMC answers, for some seconds.
bool answers() {
    for (int tries = 200; tries > 0; --tries) {
        if (askDeviceId() == 0 && ipmi_ver == 0x02)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

// What a dead predecessor may have left behind costs one request, which says so, and no more.
void recoverFromEveryState() {
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
        EXPECT_EQ(state.lost ? TRANSPORT_FAILED : 0, askDeviceId());
        EXPECT_EQ(state.lost ? ERROR_LINES : "", printed);
        EXPECT_EQ(0, askDeviceId());
    }
}

} // namespace

int platform::io_open() {
    return machine == -1 ? -1 : 0;
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

TEST(QemuKcs, CarriesFramesAndRecovers) {
    if (std::system("command -v qemu-system-x86_64 >/dev/null") != 0)
        GTEST_SKIP() << "qemu-system-x86_64 is not installed";
    setenv("VYN_SIM_TRANSPORT", "kcs", 1); // no device node
    char folder[] = "/tmp/qemu_kcs.XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(folder));
    const pid_t group = startMachine(folder);
    EXPECT_TRUE(answers());
    const unsigned long untaken = untakenValues();
    ipmiCmdSet(PARM_OS_NAME, std::string(600, 'x') + ";"); // what is out of place is refused
    EXPECT_EQ(untaken, untakenValues());
    for (int i = 0; i < 250; ++i) // sequence numbers that must be escaped, and past 255
        EXPECT_EQ(0, askDeviceId()) << i;
    recoverFromEveryState();
    kill(-group, SIGKILL);
    waitpid(group, nullptr, 0);
    std::filesystem::remove_all(folder);
}
