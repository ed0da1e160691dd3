#include "fake_bmc.h"

#include "bmc/request.h"
#include "include_linux/kcs2_linux.h"
#include "platform/platform.h"
#include "simulator/parameters.h"

#include <algorithm>
#include <cerrno>

namespace {

FakeBmc* behind_driver = nullptr;
// For the request under way; all requests wait for one another.
long message_id;
Bytes waiting;

int failed(int error) {
    errno = error;
    return -1;
}

Bytes defaultAnswer(const FakeBmc::Request& request) {
    if (request.netFn == 0x06 && request.cmd == 0x01)
        return {0x00, 0x20, 0x01, 0x01, 0x00, 0x02, 0xBF, 0, 0, 0, 0, 0};
    if ((request.netFn == 0x06 && request.cmd == 0x58) ||
        (request.netFn == 0x04 && request.cmd == 0x02))
        return {0x00};
    return {0xC1};
}

} // namespace

// ---- The driver

int platform::ipmi_open(const char* path) {
    return behind_driver != nullptr && path == std::string("/dev/ipmi0") ? 1000 : failed(ENOENT);
}
void platform::ipmi_close(int) {}
int platform::ipmi_set_gets_events(int, int) {
    return 0;
}
int platform::ipmi_set_my_address(int, unsigned) {
    return 0;
}
int platform::ipmi_send_command(int, ipmi_req& request) {
    message_id = request.msgid;
    const ipmi_msg& message = request.msg;
    waiting = behind_driver->respond(
        {0, message.netfn, 0, message.cmd, Bytes(message.data, message.data + message.data_len)});
    return 0;
}
int platform::ipmi_wait(int, int) {
    return behind_driver->interruptions-- > 0 ? failed(EINTR) : 1;
}
int platform::ipmi_receive_msg_trunc(int, ipmi_recv& received) {
    const std::size_t stored = std::min<std::size_t>(waiting.size(), received.msg.data_len);
    std::copy_n(waiting.begin(), stored, received.msg.data);
    received.msgid = message_id;
    received.msg.data_len = static_cast<std::uint16_t>(stored);
    return stored == waiting.size() ? 0 : failed(EMSGSIZE);
}

// ---- The BMC

FakeBmc::FakeBmc() {
    ipmi_open_intf.close(&ipmi_open_intf);
    ipmi_ver = 0;
    tryBmcAgain();
    behind_driver = this;
}

FakeBmc::~FakeBmc() {
    ipmi_open_intf.close(&ipmi_open_intf);
    behind_driver = nullptr;
}

void FakeBmc::answer(std::uint8_t netFn, std::uint8_t cmd, Bytes response) {
    handle(netFn, cmd, [response = std::move(response)](const Request&) { return response; });
}

void FakeBmc::queue(std::uint8_t netFn, std::uint8_t cmd, std::vector<Bytes> responses) {
    auto& first = m_answers[{netFn, cmd}].first;
    first.insert(first.end(), responses.begin(), responses.end());
}

void FakeBmc::handle(std::uint8_t netFn, std::uint8_t cmd, Handler handler) {
    m_answers[{netFn, cmd}].usual = std::move(handler);
}

std::vector<Bytes> FakeBmc::sent(std::uint8_t netFn, std::uint8_t cmd) const {
    std::vector<Bytes> data;
    for (const Request& request : m_requests)
        if (request.netFn == netFn && request.cmd == cmd)
            data.push_back(request.data);
    return data;
}

std::vector<FakeBmc::Upload> FakeBmc::uploads() const {
    bmcsim::Parameters parameters;
    bmcsim::Ledger ledger;
    bmcsim::Session session;
    session.strict = true;
    std::vector<Upload> values;
    for (const Bytes& chunk : sent(0x06, 0x58)) {
        const auto [code, value] = setParameter(parameters, session, ledger, chunk, false);
        if (code != 0)
            values.push_back({-1, -1, "a chunk that does not fit: " + bmcsim::hexText(chunk)});
        else if (value)
            values.push_back(
                {value->selector, value->selector < 207 ? -1 : value->index, value->text});
    }
    if (!session.pending.empty())
        values.push_back({-1, -1, "a value without its end"});
    return values;
}

void FakeBmc::forget() {
    m_requests.clear();
}

Bytes FakeBmc::respond(const Request& request) {
    m_requests.push_back(request);
    auto& [first, usual] = m_answers[{request.netFn, request.cmd}];
    if (first.empty())
        return usual ? usual(request) : defaultAnswer(request);
    const Bytes answer = first.front();
    first.pop_front();
    return answer;
}
