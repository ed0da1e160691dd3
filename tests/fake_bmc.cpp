#include "fake_bmc.h"

#include <cstdlib>
#include <numeric>
#include <poll.h>
#include <stdexcept>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr std::uint8_t MESSAGE_END = 0xA0, COMMAND_END = 0xA1, ESCAPE = 0xAA;

void put(Bytes& wire, std::uint8_t byte) {
    if (byte == MESSAGE_END || byte == COMMAND_END || byte == ESCAPE) {
        wire.push_back(ESCAPE);
        byte = static_cast<std::uint8_t>(byte | 0x10);
    }
    wire.push_back(byte);
}

std::uint8_t sum(const Bytes& bytes) {
    return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0));
}

bool writeAll(int fd, const Bytes& bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const ssize_t n = ::send(fd, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
        if (n <= 0)
            return false;
        at += static_cast<std::size_t>(n);
    }
    return true;
}

Bytes defaultAnswer(const FakeBmc::Request& request) {
    if (request.netFn == 0x06 && request.cmd == 0x01)
        return {0x00, 0x20, 0x01, 0x01, 0x00, 0x02, 0xBF, 0, 0, 0, 0, 0};
    if ((request.netFn == 0x06 && request.cmd == 0x58) ||
        (request.netFn == 0x04 && request.cmd == 0x02))
        return {0x00};
    return {0xC1};
}

// Adds one chunk to the values put together so far. Returns why it does not fit, or nothing.
std::string addChunk(const Bytes& chunk, std::vector<FakeBmc::Upload>& values, std::size_t& owed) {
    if (chunk.size() < 7)
        return "short chunk";
    const int selector = chunk[0];
    const std::size_t head = selector == 207 || selector == 208 ? 8 : 7;
    const std::size_t total = chunk[2] + 255U * chunk[3];
    const std::size_t offset = chunk[4] + 255U * chunk[5];
    if (chunk[1] != 0x10 || chunk.size() != head + chunk[6] || chunk[6] > 32)
        return "count does not fit";
    if (offset == 0) {
        if (owed != 0)
            return "previous value incomplete";
        values.push_back({selector, head == 8 ? chunk[7] : -1, ""});
        owed = total;
    } else if (values.empty() || values.back().selector != selector ||
               values.back().value.size() != offset) {
        return "offset does not fit";
    }
    if (chunk[6] > owed)
        return "more than the total";
    values.back().value.append(chunk.begin() + static_cast<std::ptrdiff_t>(head), chunk.end());
    owed -= chunk[6];
    return "";
}

} // namespace

FakeBmc::FakeBmc() {
    char folder[] = "/tmp/fake-bmc.XXXXXX";
    if (mkdtemp(folder) == nullptr || pipe(m_stop) != 0)
        throw std::runtime_error("fake BMC: no folder or pipe");
    m_folder = folder;
    m_path = m_folder + "/bmc";
    m_listener = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    memcpy(address.sun_path, m_path.c_str(), m_path.size() + 1);
    if (bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(m_listener, 4) != 0)
        throw std::runtime_error("fake BMC: can't listen");
    setenv("VYN_SIM_BMC", m_path.c_str(), 1);
    m_thread = std::thread(&FakeBmc::serve, this);
}

FakeBmc::~FakeBmc() {
    close(m_stop[1]);
    m_thread.join();
    close(m_stop[0]);
    close(m_listener);
    unlink(m_path.c_str());
    rmdir(m_folder.c_str());
    unsetenv("VYN_SIM_BMC");
}

void FakeBmc::answer(std::uint8_t netFn, std::uint8_t cmd, Bytes response) {
    handle(netFn, cmd, [response = std::move(response)](const Request&) { return response; });
}

void FakeBmc::queue(std::uint8_t netFn, std::uint8_t cmd, std::vector<Bytes> responses) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    auto& waiting = m_queues[{netFn, cmd}];
    waiting.insert(waiting.end(), responses.begin(), responses.end());
}

void FakeBmc::handle(std::uint8_t netFn, std::uint8_t cmd, Handler handler) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_handlers[{netFn, cmd}] = std::make_shared<Handler>(std::move(handler));
}

std::vector<FakeBmc::Request> FakeBmc::requests(bool detection) const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    std::vector<Request> wanted;
    for (const Request& request : m_requests)
        if (detection || (request.netFn != 0x2C && (request.netFn != 0x06 || request.cmd != 0x01)))
            wanted.push_back(request);
    return wanted;
}

std::vector<Bytes> FakeBmc::sent(std::uint8_t netFn, std::uint8_t cmd) const {
    std::vector<Bytes> data;
    for (const Request& request : requests(true))
        if (request.netFn == netFn && request.cmd == cmd)
            data.push_back(request.data);
    return data;
}

std::vector<FakeBmc::Upload> FakeBmc::uploads() const {
    std::vector<Upload> values;
    std::size_t owed = 0;
    for (const Bytes& chunk : sent(0x06, 0x58)) {
        const std::string reason = addChunk(chunk, values, owed);
        if (!reason.empty()) {
            values.push_back({-1, -1, reason});
            owed = 0;
        }
    }
    if (owed != 0)
        values.push_back({-1, -1, "last value incomplete"});
    return values;
}

void FakeBmc::forget() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_requests.clear();
}

bool FakeBmc::waitUntil(const std::function<bool()>& condition, int seconds) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
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
    for (;;) {
        pollfd waiting[] = {{m_listener, POLLIN, 0}, {m_stop[0], POLLIN, 0}};
        if (poll(waiting, 2, -1) < 0 || waiting[1].revents != 0)
            return;
        const int fd = accept(m_listener, nullptr, nullptr);
        if (fd < 0)
            continue;
        converse(fd);
        close(fd);
    }
}

void FakeBmc::converse(int fd) {
    if (!writeAll(fd, {MESSAGE_END, 0xFF, 0x01, COMMAND_END}))
        return;
    Bytes message;
    while (consume(fd, message)) {
        if (message.size() < 4 || sum(message) != 0)
            continue;
        const Request request{static_cast<std::uint8_t>(message[1] >> 2), message[2],
                              Bytes(message.begin() + 3, message.end() - 1)};
        const Bytes answer = respond(request);
        m_answered.notify_all();
        if (answer.empty())
            return;
        Bytes response{message[0], static_cast<std::uint8_t>(message[1] | 0x04), message[2]};
        response.insert(response.end(), answer.begin(), answer.end());
        response.push_back(static_cast<std::uint8_t>(-sum(response)));
        Bytes wire;
        for (const std::uint8_t byte : response)
            put(wire, byte);
        wire.push_back(MESSAGE_END);
        if (!writeAll(fd, wire))
            return;
    }
}

// Records the request and finds its answer; handlers run without the lock, so that they may ask
// this BMC what it received.
Bytes FakeBmc::respond(const Request& request) {
    std::shared_ptr<Handler> handler;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_requests.push_back(request);
        auto& waiting = m_queues[{request.netFn, request.cmd}];
        if (!waiting.empty()) {
            Bytes answer = waiting.front();
            waiting.pop_front();
            return answer;
        }
        const auto known = m_handlers.find({request.netFn, request.cmd});
        if (known != m_handlers.end())
            handler = known->second;
    }
    return handler ? (*handler)(request) : defaultAnswer(request);
}

// Reads up to the end of the next message, control commands skipped. False at the end.
bool FakeBmc::consume(int fd, Bytes& message) {
    message.clear();
    bool escaped = false;
    for (;;) {
        pollfd waiting[] = {{fd, POLLIN, 0}, {m_stop[0], POLLIN, 0}};
        std::uint8_t byte = 0;
        if (poll(waiting, 2, -1) < 0 || waiting[1].revents != 0 || read(fd, &byte, 1) != 1)
            return false;
        if (byte == MESSAGE_END && !message.empty())
            return true;
        if (byte == MESSAGE_END || byte == COMMAND_END) {
            message.clear();
            escaped = false;
        } else if (byte == ESCAPE) {
            escaped = true;
        } else {
            message.push_back(static_cast<std::uint8_t>(escaped ? byte & ~0x10 : byte));
            escaped = false;
        }
    }
}
