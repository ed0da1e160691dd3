#include "fake_bmc.h"

#include "bmc/request.h"
#include "include_linux/kcs2_linux.h"
#include "simulator/parameters.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace {

Bytes defaultAnswer(const FakeBmc::Request& request) {
    if (request.netFn == 0x06 && request.cmd == 0x01)
        return {0x00, 0x20, 0x01, 0x01, 0x00, 0x02, 0xBF, 0, 0, 0, 0, 0};
    if ((request.netFn == 0x06 && request.cmd == 0x58) ||
        (request.netFn == 0x04 && request.cmd == 0x02))
        return {0x00};
    return {0xC1};
}

// Waits until there is something to read from `fd`; false when `stop` is closed first.
bool readable(int fd, int stop) {
    pollfd waiting[] = {{fd, POLLIN, 0}, {stop, POLLIN, 0}};
    return poll(waiting, 2, -1) > 0 && waiting[1].revents == 0;
}

} // namespace

FakeBmc::FakeBmc() {
    // Whatever BMC this process knew before is forgotten.
    ipmi_open_intf.close(&ipmi_open_intf);
    ipmi_ver = 0;
    tryBmcAgain();
    char folder[] = "/tmp/fake-bmc.XXXXXX";
    if (mkdtemp(folder) == nullptr || pipe(m_stop) != 0)
        throw std::runtime_error("fake BMC: no folder or pipe");
    m_folder = folder;
    m_listener.path = m_folder + "/bmc";
    const std::string error = bmcsim::openListener(m_listener);
    if (!error.empty())
        throw std::runtime_error("fake BMC: " + error);
    setenv("VYN_SIM_BMC", m_listener.path.c_str(), 1);
    m_thread = std::thread(&FakeBmc::serve, this);
}

FakeBmc::~FakeBmc() {
    close(m_stop[1]);
    m_thread.join();
    close(m_stop[0]);
    bmcsim::closeListener(m_listener);
    std::filesystem::remove_all(m_folder);
    unsetenv("VYN_SIM_BMC");
}

void FakeBmc::answer(std::uint8_t netFn, std::uint8_t cmd, Bytes response) {
    handle(netFn, cmd, [response = std::move(response)](const Request&) { return response; });
}

void FakeBmc::queue(std::uint8_t netFn, std::uint8_t cmd, std::vector<Bytes> responses) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    auto& first = m_answers[{netFn, cmd}].first;
    first.insert(first.end(), responses.begin(), responses.end());
}

void FakeBmc::handle(std::uint8_t netFn, std::uint8_t cmd, Handler handler) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_answers[{netFn, cmd}].usual = std::move(handler);
}

std::vector<Bytes> FakeBmc::sent(std::uint8_t netFn, std::uint8_t cmd) const {
    const std::lock_guard<std::mutex> guard(m_mutex);
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
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_requests.clear();
}

bool FakeBmc::waitUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        // The slice covers a condition that comes true without an answer of this BMC.
        std::unique_lock<std::mutex> guard(m_mutex);
        m_answered.wait_for(guard, std::chrono::milliseconds(20));
    }
    return true;
}

void FakeBmc::serve() {
    while (readable(m_listener.socket.get(), m_stop[0])) {
        const bmcsim::Descriptor client = bmcsim::acceptClient(m_listener);
        const auto write = [&](const Bytes& frame) {
            ::send(client.get(), frame.data(), frame.size(), MSG_NOSIGNAL);
        };
        write(bmcsim::encodeHello());
        bmcsim::FrameReader reader;
        std::uint8_t bytes[256];
        ssize_t count = 0;
        while (readable(client.get(), m_stop[0]) &&
               (count = read(client.get(), bytes, sizeof bytes)) > 0)
            for (const auto& frame : feedFrames(reader, bytes, static_cast<std::size_t>(count))) {
                if (!frame.message)
                    continue;
                Request message = *frame.message;
                message.data = respond(message);
                m_answered.notify_all();
                message.netFn++;
                write(encodeMessage(message));
            }
    }
}

Bytes FakeBmc::respond(const Request& request) {
    Handler handler;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_requests.push_back(request);
        auto& [first, usual] = m_answers[{request.netFn, request.cmd}];
        if (!first.empty()) {
            Bytes answer = first.front();
            first.pop_front();
            return answer;
        }
        handler = usual ? usual : defaultAnswer;
    }
    return handler(request);
}
