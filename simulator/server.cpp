#include "server.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <poll.h>
#include <unistd.h>

namespace bmcsim {

namespace {

constexpr size_t MAX_BACKLOG = 4 << 20; // bytes a client may leave unread before it is dropped
constexpr size_t MAX_QUEUE = 4096;      // answers that a client may be owed
constexpr size_t STEP = 4096;           // a pipe that polls writable takes so much
constexpr int64_t MAX_SLEEP_MS = 3600000;
constexpr int64_t WAIT_TICK_MS = 20; // how often a wait is looked at without any request

// What is there to read; nothing when the other side has ended.
std::optional<std::string> readSome(int fd) {
    char buffer[STEP];
    const ssize_t count = read(fd, buffer, sizeof buffer);
    if (count > 0)
        return std::string(buffer, static_cast<size_t>(count));
    const bool later = count < 0 && (errno == EAGAIN || errno == EINTR);
    return later ? std::optional(std::string()) : std::nullopt;
}

// Sends the beginning of what is to go out. False when the other side is gone.
template <typename Buffer>
bool writeSome(int fd, Buffer& out) {
    const ssize_t count = write(fd, out.data(), std::min(out.size(), STEP));
    if (count > 0)
        out.erase(out.begin(), out.begin() + count);
    return count >= 0 || errno == EAGAIN || errno == EINTR;
}

bool ready(int fd, short events) {
    struct pollfd polled = {fd, events, 0};
    return poll(&polled, 1, 0) > 0;
}

// ---- BMC clients ----

void queueAnswer(Server& server, BmcClient& client, const Wire& wire) {
    const int64_t now = server.bmc.ledger.nowMs;
    int64_t due = now + wire.delayMs;
    if (server.bmc.faults.delayMs > 0) {
        const int64_t start = std::max(now, server.busyUntilMs);
        server.busyUntilMs = start + server.bmc.faults.delayMs;
        due += start - now;
    }
    if (!wire.bytes.empty() || wire.close)
        client.queue.push_back({due, wire.bytes, wire.close});
}

void readClient(Server& server, BmcClient& client) {
    const auto bytes = readSome(client.socket.get());
    if (!bytes) {
        client.dead = true;
        return;
    }
    const auto* data = reinterpret_cast<const uint8_t*>(bytes->data());
    for (const Frame& frame : feedFrames(client.reader, data, bytes->size())) {
        if (frame.message && !client.closing)
            queueAnswer(server, client, serveRequest(server.bmc, client.session, *frame.message));
        if (!frame.control.empty())
            trace(server.bmc.ledger, "control command " + hexText(frame.control));
        if (!frame.garbage.empty())
            complain(server.bmc.ledger, "bad frame: " + frame.garbage);
    }
}

void releaseDue(BmcClient& client, int64_t now) {
    for (auto entry = client.queue.begin(); entry != client.queue.end() && !client.closing;) {
        if (entry->dueMs > now) {
            ++entry; // a late answer does not hold up the ones after it
            continue;
        }
        client.out.insert(client.out.end(), entry->bytes.begin(), entry->bytes.end());
        client.closing = entry->close;
        entry = client.queue.erase(entry);
    }
}

void flushClient(BmcClient& client, int64_t now) {
    releaseDue(client, now);
    const bool gone = !client.out.empty() && !writeSome(client.socket.get(), client.out);
    client.dead = client.dead || gone || client.out.size() > MAX_BACKLOG ||
                  client.queue.size() > MAX_QUEUE || (client.closing && client.out.empty());
}

// ---- control clients ----

// Returns an error text, empty when it is done.
std::string perform(Server& server, Action action) {
    if (action == Action::DISCONNECT || action == Action::AWAY)
        for (BmcClient& client : server.clients)
            client.dead = true;
    if (action == Action::AWAY)
        closeListener(server.bmcListener);
    if (action == Action::BACK && server.bmcListener.socket.get() < 0)
        return openListener(server.bmcListener);
    server.quit = server.quit || action == Action::QUIT;
    return "";
}

void finishReply(ControlClient& control, const std::string& error) {
    control.out += error.empty() ? "ok\n" : "error: " + error + "\n";
}

// Returns false while a wait goes on.
bool endWait(const Server& server, ControlClient& control) {
    if (!control.wait)
        return true;
    const bool holds = control.wait->holds();
    if (!holds && server.bmc.ledger.nowMs < control.wait->untilMs)
        return false;
    finishReply(control, holds ? "" : "timed out waiting for " + control.wait->text);
    control.wait.reset();
    return true;
}

// Carries out the lines that have arrived, up to one that waits.
void serveLines(Server& server, ControlClient& control) {
    size_t end = 0;
    while (endWait(server, control) && (end = control.in.find('\n')) != std::string::npos) {
        Outcome outcome = runCommand(server.bmc, control.in.substr(0, end));
        control.in.erase(0, end + 1);
        for (const std::string& text : outcome.lines)
            control.out += text + "\n";
        if (outcome.error.empty())
            outcome.error = perform(server, outcome.action);
        control.wait = std::move(outcome.wait);
        if (!control.wait)
            finishReply(control, outcome.error);
    }
}

void flushControl(Server& server, ControlClient& control) {
    serveLines(server, control);
    while (!control.dead && !control.out.empty() && ready(control.output, POLLOUT))
        control.dead = !writeSome(control.output, control.out);
    control.dead = control.dead || (control.ended && !control.wait && control.out.empty());
}

// ---- the loop ----

// Everything that may be read from or written to, or that asks to be let in.
std::vector<struct pollfd> watched(const Server& server) {
    std::vector<struct pollfd> polled = {{server.bmcListener.socket.get(), POLLIN, 0},
                                         {server.controlListener.socket.get(), POLLIN, 0}};
    for (const BmcClient& client : server.clients) {
        const short events = client.out.empty() ? POLLIN : POLLIN | POLLOUT;
        polled.push_back({client.socket.get(), events, 0});
    }
    for (const ControlClient& control : server.controls) {
        polled.push_back({control.ended ? -1 : control.input, POLLIN, 0});
        polled.push_back({control.out.empty() ? -1 : control.output, POLLOUT, 0});
    }
    return polled;
}

// Milliseconds until something is due without any input.
int64_t nextDue(const Server& server) {
    const int64_t now = server.bmc.ledger.nowMs;
    int64_t due = now + MAX_SLEEP_MS;
    for (const BmcClient& client : server.clients)
        for (const Outgoing& answer : client.queue)
            due = std::min(due, answer.dueMs);
    for (const ControlClient& control : server.controls)
        if (control.wait)
            due = std::min({due, control.wait->untilMs, now + WAIT_TICK_MS});
    return std::max<int64_t>(0, due - now);
}

void readAll(Server& server) {
    for (BmcClient& client : server.clients)
        readClient(server, client);
    for (ControlClient& control : server.controls) {
        if (control.ended || !ready(control.input, POLLIN)) // standard input may block
            continue;
        const auto text = readSome(control.input);
        control.ended = !text;
        control.in += text.value_or("");
    }
    Descriptor client = acceptClient(server.bmcListener);
    if (client.get() >= 0)
        server.clients.push_back({std::move(client), newSession(server.bmc)});
    Descriptor control = acceptClient(server.controlListener);
    const int fd = control.get();
    if (fd >= 0)
        server.controls.push_back({std::move(control), fd, fd});
}

void flushAll(Server& server) {
    for (BmcClient& client : server.clients)
        flushClient(client, server.bmc.ledger.nowMs);
    for (ControlClient& control : server.controls)
        flushControl(server, control);
}

template <typename Clients>
void dropDead(Clients& clients) {
    const auto dead = [](const auto& client) { return client.dead; };
    clients.erase(std::remove_if(clients.begin(), clients.end(), dead), clients.end());
}

} // namespace

int64_t monotonicMs() {
    struct timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

void runServer(Server& server, volatile const int* stop) {
    signal(SIGPIPE, SIG_IGN);
    sigset_t open;
    sigprocmask(SIG_BLOCK, nullptr, &open);
    sigdelset(&open, SIGINT);
    sigdelset(&open, SIGTERM);
    while (!server.quit && *stop == 0) {
        std::vector<struct pollfd> polled = watched(server);
        const int64_t due = nextDue(server);
        const struct timespec timeout = {due / 1000, (due % 1000) * 1000000};
        ppoll(polled.data(), static_cast<nfds_t>(polled.size()), &timeout, &open);
        server.bmc.ledger.nowMs = monotonicMs();
        readAll(server);
        flushAll(server);
        dropDead(server.clients);
        dropDead(server.controls);
        server.bmc.clients = server.clients.size();
    }
    flushAll(server);
    server.clients.clear();
    server.controls.clear();
}

} // namespace bmcsim
