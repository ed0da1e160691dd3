#include "server.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace bmcsim {

constexpr size_t MAX_CLIENTS = 64;
constexpr size_t MAX_BACKLOG = 4 << 20; // bytes a client may leave unread before it is dropped
constexpr size_t MAX_QUEUE = 4096;      // answers that a client may be owed
constexpr size_t MAX_LINE = 1 << 20;    // of a control client
constexpr size_t STDOUT_STEP = 4096;    // a pipe that polls writable takes so much
constexpr int64_t WAIT_TICK_MS = 20;    // how often a wait is looked at without any request

int64_t monotonicMs() {
    struct timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

// ---- BMC clients ----

static void queueAnswer(Server& server, BmcClient& client, const Wire& wire) {
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

static void readFrames(Server& server, BmcClient& client, const uint8_t* bytes, size_t size) {
    FrameSink sink;
    sink.message = [&](const Message& request) {
        if (!client.closing)
            queueAnswer(server, client, handleRequest(server.bmc, client.session, request));
    };
    sink.control = [&](const Bytes& control) {
        trace(server.bmc.ledger, "control command " + hexText(control));
    };
    sink.garbage = [&](const std::string& why) { badFrame(server.bmc, why); };
    feedFrames(client.reader, bytes, size, sink);
}

static void releaseDue(BmcClient& client, int64_t now) {
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

static void readClient(Server& server, BmcClient& client) {
    uint8_t buffer[4096];
    const ssize_t count = read(client.socket.get(), buffer, sizeof buffer);
    if (count > 0)
        readFrames(server, client, buffer, static_cast<size_t>(count));
    else if (count == 0 || (errno != EAGAIN && errno != EINTR))
        client.dead = true;
}

static void writeClient(BmcClient& client) {
    if (!client.out.empty()) {
        const ssize_t count =
            send(client.socket.get(), client.out.data(), client.out.size(), MSG_NOSIGNAL);
        if (count > 0)
            client.out.erase(client.out.begin(), client.out.begin() + count);
        else if (errno != EAGAIN && errno != EINTR)
            client.dead = true;
    }
    if (client.out.size() > MAX_BACKLOG || client.queue.size() > MAX_QUEUE ||
        (client.closing && client.out.empty()))
        client.dead = true;
}

static void acceptBmcClient(Server& server, int listener) {
    Descriptor socket = acceptClient(listener);
    if (socket.get() < 0 || server.clients.size() >= MAX_CLIENTS)
        return; // closes it
    BmcClient client;
    client.socket = std::move(socket);
    client.session = newSession(server.bmc);
    // A lone end mark first: it flushes what a predecessor left half-sent in the client.
    client.out = {FRAME_MESSAGE_END, 0xFF, 0x01, FRAME_CONTROL_END};
    server.clients.push_back(std::move(client));
}

// ---- control clients ----

static void finishReply(ControlClient& control, const std::string& error) {
    control.out += error.empty() ? "ok\n" : "error: " + error + "\n";
}

// Returns an error text, empty when it is done.
static std::string perform(Server& server, Action action) {
    if (action == Action::DISCONNECT || action == Action::AWAY)
        for (BmcClient& client : server.clients)
            client.dead = true;
    std::string error;
    for (Listener& listener : server.bmcListeners) {
        if (action == Action::AWAY)
            closeListener(listener);
        if (action == Action::BACK && listener.socket.get() < 0)
            openListener(listener, error);
    }
    if (action == Action::QUIT)
        server.quit = true;
    return error;
}

// Carries out the lines that have arrived, up to one that waits.
static void serveLines(Server& server, ControlClient& control) {
    size_t end = 0;
    while (!control.wait && (end = control.in.find('\n')) != std::string::npos) {
        const std::string line = control.in.substr(0, end);
        control.in.erase(0, end + 1);
        Outcome outcome = runCommand(server.bmc, line);
        for (const std::string& text : outcome.lines)
            control.out += text + "\n";
        if (outcome.error.empty())
            outcome.error = perform(server, outcome.action);
        control.wait = std::move(outcome.wait);
        if (!control.wait)
            finishReply(control, outcome.error);
    }
}

static void checkWait(Server& server, ControlClient& control) {
    if (!control.wait)
        return;
    const bool holds = control.wait->holds(server.bmc);
    if (!holds && server.bmc.ledger.nowMs < control.wait->untilMs)
        return;
    finishReply(control, holds ? "" : "timed out waiting for" + control.wait->text);
    control.wait.reset();
    serveLines(server, control);
}

static void readControl(Server& server, ControlClient& control) {
    char buffer[4096];
    const ssize_t count = read(control.input, buffer, sizeof buffer);
    if (count > 0) {
        control.in.append(buffer, static_cast<size_t>(count));
        serveLines(server, control);
    } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
        control.ended = true;
        if (!control.in.empty() && control.in.back() != '\n')
            control.in += '\n'; // a last line without an end
        serveLines(server, control);
    }
    if (control.in.size() > MAX_LINE)
        control.dead = true;
}

static void writeControl(ControlClient& control) {
    if (control.out.empty())
        return;
    const ssize_t count =
        write(control.output, control.out.data(), std::min(control.out.size(), STDOUT_STEP));
    if (count > 0)
        control.out.erase(0, static_cast<size_t>(count));
    else if (errno != EAGAIN && errno != EINTR)
        control.dead = true;
}

static void acceptControl(Server& server, int listener) {
    ControlClient control;
    control.socket = acceptClient(listener);
    if (control.socket.get() < 0 || server.controls.size() >= MAX_CLIENTS)
        return;
    control.input = control.output = control.socket.get();
    server.controls.push_back(std::move(control));
}

// ---- the loop ----

static void dropDead(Server& server) {
    const auto dead = [](const BmcClient& client) { return client.dead; };
    server.clients.erase(std::remove_if(server.clients.begin(), server.clients.end(), dead),
                         server.clients.end());
    server.bmc.clients = server.clients.size();
    const auto done = [](const ControlClient& control) {
        return control.dead || (control.ended && !control.wait && control.out.empty());
    };
    server.controls.erase(std::remove_if(server.controls.begin(), server.controls.end(), done),
                          server.controls.end());
}

// Milliseconds until something is due without any input, -1 when nothing is.
static int64_t nextDue(const Server& server) {
    int64_t due = INT64_MAX;
    for (const BmcClient& client : server.clients)
        for (const Outgoing& answer : client.queue)
            due = std::min(due, answer.dueMs);
    for (const ControlClient& control : server.controls)
        if (control.wait)
            due = std::min({due, control.wait->untilMs, server.bmc.ledger.nowMs + WAIT_TICK_MS});
    return due == INT64_MAX ? -1 : std::max<int64_t>(0, due - server.bmc.ledger.nowMs);
}

static std::vector<struct pollfd> watched(const Server& server) {
    std::vector<struct pollfd> polled;
    const auto add = [&](int fd, bool in, bool out) {
        const auto events = static_cast<short>((in ? POLLIN : 0) | (out ? POLLOUT : 0));
        polled.push_back({events != 0 ? fd : -1, events, 0});
    };
    for (const Listener& listener : server.bmcListeners)
        add(listener.socket.get(), true, false);
    for (const Listener& listener : server.controlListeners)
        add(listener.socket.get(), true, false);
    for (const BmcClient& client : server.clients)
        add(client.socket.get(), true, !client.out.empty() || client.closing);
    for (const ControlClient& control : server.controls) {
        add(control.input, !control.ended && !control.dead, false);
        add(control.output, false, !control.out.empty());
    }
    return polled;
}

static void serveEvents(Server& server, const std::vector<struct pollfd>& polled) {
    size_t at = server.bmcListeners.size() + server.controlListeners.size();
    for (BmcClient& client : server.clients)
        if (polled[at++].revents != 0)
            readClient(server, client);
    for (ControlClient& control : server.controls) {
        if (polled[at++].revents != 0)
            readControl(server, control);
        at++; // output is tried below in any case
    }
    at = 0;
    for (const Listener& listener : server.bmcListeners)
        if (polled[at++].revents != 0)
            acceptBmcClient(server, listener.socket.get());
    for (const Listener& listener : server.controlListeners)
        if (polled[at++].revents != 0)
            acceptControl(server, listener.socket.get());
}

static bool writable(int fd) {
    struct pollfd polled = {fd, POLLOUT, 0};
    return poll(&polled, 1, 0) > 0;
}

static void flush(Server& server) {
    for (BmcClient& client : server.clients) {
        releaseDue(client, server.bmc.ledger.nowMs);
        writeClient(client);
    }
    for (ControlClient& control : server.controls) {
        checkWait(server, control);
        while (!control.dead && !control.out.empty() && writable(control.output))
            writeControl(control);
    }
}

void runServer(Server& server, volatile const int* stop) {
    sigset_t open;
    sigprocmask(SIG_BLOCK, nullptr, &open);
    sigdelset(&open, SIGINT);
    sigdelset(&open, SIGTERM);
    while (!server.quit && *stop == 0) {
        std::vector<struct pollfd> polled = watched(server);
        const int64_t due = nextDue(server);
        const struct timespec timeout = {due / 1000, (due % 1000) * 1000000};
        const int ready = ppoll(polled.data(), polled.size(), due < 0 ? nullptr : &timeout, &open);
        server.bmc.ledger.nowMs = monotonicMs();
        if (ready > 0)
            serveEvents(server, polled);
        flush(server);
        dropDead(server);
    }
    flush(server);
    server.clients.clear();
    server.controls.clear();
}

} // namespace bmcsim
