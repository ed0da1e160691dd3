#include "kcs_linux.h"

#include "config/logs.h"
#include "include_linux/ipmi_oem.h"
#include "state/flags.h"
#include "tools/program.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>

namespace {

using std::chrono::steady_clock;

// The IPMI Version field of the Get Device ID response (IPMI v2.0, 20.1), counted in the frame.
constexpr int VERSION_BYTE = 7;
// The completion code of a driver whose BMC is silent (IPMI v2.0, 5.2).
constexpr unsigned char NO_ANSWER = 0xC3;

struct detection {
    unsigned int data_port;
    unsigned int status_port;
    unsigned char version;
};

constexpr detection ATTEMPTS[] = {
    {0xCA2, 0xCA3, 0x02},
    {0xCA8, 0xCAC, 0x02},
    {0xCA2, 0xCA3, 0x51},
};

bool ports_enabled = false;

// When the first of the latest requests, all failed, began under a stop, or was the one that the
// stop met: a BMC that is silent then gets only a little more time.
std::optional<steady_clock::time_point> failing_since;
constexpr std::chrono::seconds FAILING_MOST{6};
// In a farewell, however long that one had waited already: another must be tried before the BMC
// counts as silent.
constexpr std::chrono::seconds COUNTED_OF_FIRST{5};

bool isNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

// A node of an IPMI driver that this process has not opened: "/dev/ipmi1" where unit 0 is disabled,
// or one that it may not open. Empty when there is none.
std::string foreignNode() {
    for (const std::string& name : tools.list_folder("/dev"))
        if (name.rfind("ipmi", 0) == 0 && isNumber(name.substr(4)))
            return "/dev/" + name;
    for (const char* folder : {"/dev/ipmi", "/dev/ipmidev"})
        for (const std::string& name : tools.list_folder(folder))
            if (isNumber(name))
                return std::string(folder) + "/" + name;
    return "";
}

// Whether the ports are nobody else's. They are never touched beside a driver that is not ours.
bool portsAreFree() {
    constexpr std::chrono::seconds LOOK_INTERVAL{1};
    static steady_clock::time_point looked_at;
    static bool is_free = false, told = false;
    if (!ports_enabled || ipmi_open_intf.opened != 0)
        return ports_enabled;
    const auto now = steady_clock::now();
    if (looked_at != steady_clock::time_point() && now - looked_at < LOOK_INTERVAL)
        return is_free;
    looked_at = now;
    const std::string node = foreignNode();
    is_free = node.empty();
    if (!is_free && !told) {
        printErrLog("IPMI ports ->", node + " belongs to a driver, the ports are left alone");
        told = true;
    }
    return is_free;
}

// Under a stop the driver may still be about the request that was not waited for.
bool answerGivenUp() {
    return ipmi_open_intf.opened != 0 && stopRequested();
}

} // namespace

void kcs_enable_ports() {
    ports_enabled = true;
}

int init_ipmi(unsigned char* ipmi_ver) {
    for (const detection& attempt : ATTEMPTS) {
        KCS_DATA = attempt.data_port;
        KCS_STATUS = attempt.status_port;
        unsigned char frame[FRAME_SIZE] = {NETFN_APP << 2, CMD_GET_DEVICE_ID};
        unsigned char response[FRAME_SIZE] = {};
        if (kcs_Interface(frame, response, 2, 0) == 0 && resp_data_len > VERSION_BYTE &&
            response[2] == 0 && response[VERSION_BYTE] == attempt.version) {
            *ipmi_ver = attempt.version;
            return 0;
        }
    }
    return 1;
}

int kcs_Interface(unsigned char* RequestCmd, unsigned char* ResponseBuf, int kcs_ReqLength,
                  int kcs_CurLength) {
    const auto began = steady_clock::now();
    if (failing_since.has_value() && began - *failing_since >= FAILING_MOST)
        return 1;
    int length = 0;
    int result = ipmiCmd(RequestCmd, ResponseBuf, kcs_ReqLength, &length);
    if (result == 0)
        resp_data_len = length;
    else if (!answerGivenUp() && portsAreFree())
        result = kcs_exchange(RequestCmd, ResponseBuf, kcs_ReqLength, kcs_CurLength);
    if (result == 0 && ResponseBuf[2] != NO_ANSWER)
        failing_since.reset();
    else if (!failing_since.has_value() && stopRequested())
        failing_since =
            farewellBegun() ? std::max(began, steady_clock::now() - COUNTED_OF_FIRST) : began;
    return result;
}
