// The IPMI device node of the simulated platform: a driver in front of the BMC behind the socket.
// Like a real driver it answers for a silent BMC after a while; unlike most it hands a late
// answer over too, under its old message id.

#include "platform/failed.h"
#include "platform/platform.h"
#include "platform/simulated/bmc_link.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <map>
#include <memory>
#include <mutex>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::uint8_t TIMED_OUT = 0xC3; // IPMI v2.0, 5.2
constexpr std::uint8_t DISCONNECTED = 0xD2;
constexpr const char* DEVICE_NODE = "/dev/ipmi0";

struct sent_request {
    long msgid;
    std::uint8_t netfn;
    std::uint8_t cmd;
};

struct message {
    sent_request request;
    std::vector<std::uint8_t> data; // completion code first
};

struct device {
    simulated::bmc_link link;
    std::map<std::uint8_t, sent_request> sent;        // by sequence byte
    std::uint8_t latest = 0;                          // sequence byte of the newest request
    std::chrono::steady_clock::time_point answer_due; // the driver answers for the BMC then
    std::deque<message> waiting;
};

std::mutex devices_lock;
std::map<int, std::unique_ptr<device>> devices; // by descriptor

device* find(int fd) {
    const std::lock_guard<std::mutex> guard(devices_lock);
    const auto found = devices.find(fd);
    if (found == devices.end())
        errno = EBADF;
    return found == devices.end() ? nullptr : found->second.get();
}

void answerForBmc(device& node, std::uint8_t completion_code) {
    node.waiting.push_back({node.sent[node.latest], {completion_code}});
}

// Queues an answer under the message id of its request, if it fits one.
bool queueAnswer(device& node, const simulated::bmc_answer& answer) {
    const auto request = node.sent.find(answer.sequence);
    if (request == node.sent.end() || answer.netfn != (request->second.netfn | 1) ||
        answer.cmd != request->second.cmd)
        return false;
    node.waiting.push_back({request->second, answer.data});
    node.sent.erase(request);
    return true;
}

} // namespace

int ipmi_open(const char* path) {
    auto node = std::make_unique<device>();
    if (simulated::transport() != "driver" || std::strcmp(path, DEVICE_NODE) != 0 ||
        !node->link.connect())
        return failed(ENOENT);
    const int fd = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return -1;
    const std::lock_guard<std::mutex> guard(devices_lock);
    devices[fd] = std::move(node);
    return fd;
}

void ipmi_close(int fd) {
    const std::lock_guard<std::mutex> guard(devices_lock);
    if (devices.erase(fd) != 0)
        close(fd);
}

int ipmi_set_gets_events(int fd, int) {
    return find(fd) == nullptr ? -1 : 0;
}

int ipmi_set_my_address(int fd, unsigned) {
    return find(fd) == nullptr ? -1 : 0;
}

int ipmi_send_command(int fd, ipmi_req& request) {
    device* node = find(fd);
    if (node == nullptr)
        return -1;
    if (!node->link.connect())
        return failed(EIO);
    ipmi_system_interface_addr address{};
    std::memcpy(&address, request.addr, std::min<std::size_t>(request.addr_len, sizeof address));
    const int sequence = node->link.send(request.msg.netfn, address.lun, request.msg.cmd,
                                         request.msg.data, request.msg.data_len);
    if (sequence < 0)
        return failed(EIO);
    node->latest = static_cast<std::uint8_t>(sequence);
    node->answer_due =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(simulated::timeoutMs());
    node->sent[node->latest] = {request.msgid, request.msg.netfn, request.msg.cmd};
    return 0;
}

int ipmi_wait(int fd, int timeout_ms) {
    using std::chrono::steady_clock;
    device* node = find(fd);
    if (node == nullptr)
        return -1;
    const auto until = steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    while (node->waiting.empty()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(
            std::min(until, node->answer_due) - steady_clock::now());
        simulated::bmc_answer answer;
        switch (node->link.receive(answer, std::max(0, static_cast<int>(left.count())))) {
        case simulated::bmc_link::result::answered:
            queueAnswer(*node, answer);
            break;
        case simulated::bmc_link::result::timed_out:
            if (steady_clock::now() < node->answer_due)
                return 0;
            answerForBmc(*node, TIMED_OUT);
            break;
        case simulated::bmc_link::result::disconnected:
            answerForBmc(*node, DISCONNECTED);
            break;
        case simulated::bmc_link::result::interrupted:
            return failed(EINTR);
        }
    }
    return 1;
}

int ipmi_receive_msg_trunc(int fd, ipmi_recv& received) {
    device* node = find(fd);
    if (node == nullptr)
        return -1;
    if (node->waiting.empty())
        return failed(EAGAIN);
    const message next = std::move(node->waiting.front());
    node->waiting.pop_front();
    const std::size_t stored = std::min<std::size_t>(next.data.size(), received.msg.data_len);
    std::copy_n(next.data.begin(), stored, received.msg.data);
    received.msgid = next.request.msgid;
    received.msg.netfn = next.request.netfn | 1;
    received.msg.cmd = next.request.cmd;
    received.msg.data_len = static_cast<std::uint16_t>(stored);
    if (stored == next.data.size())
        return 0;
    return failed(EMSGSIZE);
}

} // namespace platform
