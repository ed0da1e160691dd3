#include "platform/simulated/bmc_link.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace simulated {

namespace {

constexpr std::uint8_t END_OF_MESSAGE = 0xA0;
constexpr std::uint8_t END_OF_COMMAND = 0xA1;
constexpr std::uint8_t ESCAPE = 0xAA;
constexpr std::uint8_t ESCAPED_BIT = 0x10;

constexpr std::size_t SHORTEST_ANSWER = 5;
constexpr std::size_t LONGEST_BACKLOG = 65536;
constexpr int DEFAULT_TIMEOUT_MS = 3000;

std::uint8_t sum(const std::vector<std::uint8_t>& bytes) {
    return std::accumulate(
        bytes.begin(), bytes.end(), std::uint8_t{0},
        [](std::uint8_t a, std::uint8_t b) { return static_cast<std::uint8_t>(a + b); });
}

std::vector<std::uint8_t> escaped(const std::vector<std::uint8_t>& message) {
    std::vector<std::uint8_t> wire;
    for (const std::uint8_t byte : message) {
        if (byte == END_OF_MESSAGE || byte == END_OF_COMMAND || byte == ESCAPE) {
            wire.push_back(ESCAPE);
            wire.push_back(byte | ESCAPED_BIT);
        } else {
            wire.push_back(byte);
        }
    }
    wire.push_back(END_OF_MESSAGE);
    return wire;
}

// Undoes the escapes; empty when the text ends inside one.
std::vector<std::uint8_t> unescaped(const std::uint8_t* begin, const std::uint8_t* end) {
    std::vector<std::uint8_t> message;
    for (; begin != end; ++begin) {
        std::uint8_t byte = *begin;
        if (byte == ESCAPE) {
            if (++begin == end)
                return {};
            byte = *begin & static_cast<std::uint8_t>(~ESCAPED_BIT);
        }
        message.push_back(byte);
    }
    return message;
}

} // namespace

std::string transport() {
    const char* name = std::getenv("VYN_SIM_TRANSPORT");
    return name == nullptr || *name == '\0' ? "driver" : name;
}

int timeoutMs() {
    const char* text = std::getenv("VYN_SIM_TIMEOUT_MS");
    const int value = text == nullptr ? 0 : std::atoi(text);
    return value > 0 ? value : DEFAULT_TIMEOUT_MS;
}

bool bmc_link::connect() {
    if (m_fd >= 0)
        return true;
    const char* path = std::getenv("VYN_SIM_BMC");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path == nullptr || std::strlen(path) >= sizeof address.sun_path)
        return false;
    std::memcpy(address.sun_path, path, std::strlen(path) + 1);
    m_fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (m_fd >= 0 &&
        ::connect(m_fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        drop();
    return m_fd >= 0;
}

void bmc_link::drop() {
    if (m_fd >= 0)
        close(m_fd);
    m_fd = -1;
    m_received.clear();
}

int bmc_link::send(std::uint8_t netfn, std::uint8_t lun, std::uint8_t cmd, const std::uint8_t* data,
                   std::size_t length) {
    std::vector<std::uint8_t> message{m_sequence,
                                      static_cast<std::uint8_t>((netfn << 2) | (lun & 3)), cmd};
    message.insert(message.end(), data, data + length);
    message.push_back(static_cast<std::uint8_t>(-sum(message)));
    const std::vector<std::uint8_t> wire = escaped(message);
    for (std::size_t sent = 0; sent < wire.size();) {
        const ssize_t count = ::send(m_fd, wire.data() + sent, wire.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            drop();
            return -1;
        }
        sent += static_cast<std::size_t>(count);
    }
    return m_sequence++;
}

// Takes the next well-formed answer out of what was received.
bool bmc_link::takeAnswer(bmc_answer& answer) {
    for (;;) {
        const auto end = std::find_if(m_received.begin(), m_received.end(), [](std::uint8_t byte) {
            return byte == END_OF_MESSAGE || byte == END_OF_COMMAND;
        });
        if (end == m_received.end())
            return false;
        const bool is_message = *end == END_OF_MESSAGE;
        const std::uint8_t* raw = m_received.data();
        const std::vector<std::uint8_t> message = unescaped(raw, raw + (end - m_received.begin()));
        m_received.erase(m_received.begin(), end + 1);
        if (!is_message || message.size() < SHORTEST_ANSWER || sum(message) != 0)
            continue;
        answer.sequence = message[0];
        answer.netfn = message[1] >> 2;
        answer.cmd = message[2];
        answer.data.assign(message.begin() + 3, message.end() - 1);
        return true;
    }
}

bmc_link::result bmc_link::receive(bmc_answer& answer, int timeout_ms) {
    using std::chrono::steady_clock;
    const auto deadline = steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    while (!takeAnswer(answer)) {
        if (m_fd < 0)
            return result::disconnected;
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - steady_clock::now());
        if (left.count() <= 0)
            return result::timed_out;
        pollfd socket{m_fd, POLLIN, 0};
        const int ready = poll(&socket, 1, static_cast<int>(left.count()));
        if (ready < 0)
            return errno == EINTR ? result::interrupted : result::disconnected;
        if (ready == 0)
            continue;
        std::uint8_t chunk[1024];
        const ssize_t count = recv(m_fd, chunk, sizeof chunk, 0);
        if (count < 0 && errno == EINTR)
            return result::interrupted;
        if (count <= 0 || m_received.size() > LONGEST_BACKLOG) {
            drop();
            return result::disconnected;
        }
        m_received.insert(m_received.end(), chunk, chunk + count);
    }
    return result::answered;
}

} // namespace simulated
