// The poll loop: BMC clients speaking the byte protocol, control clients speaking lines, standard
// input and output as one more control client. One thread, nothing blocks.
#pragma once

#include "control.h"
#include "sockets.h"

#include <deque>

namespace bmcsim {

struct Outgoing {
    int64_t dueMs = 0;
    Bytes bytes;
    bool close = false; // after the bytes
};

struct BmcClient {
    Descriptor socket;
    Session session;
    FrameReader reader = {};
    std::deque<Outgoing> queue = {}; // answers whose time has not come
    Bytes out = encodeHello();
    bool closing = false; // once `out` is sent
    bool dead = false;
};

struct ControlClient {
    Descriptor socket;
    int input = -1;
    int output = -1;
    std::string in = {}, out = {};
    std::optional<PendingWait> wait = {};
    bool ended = false; // no more input
    bool dead = false;
};

struct Server {
    Bmc bmc;
    Listener bmcListener;
    Listener controlListener; // without a path there is none
    std::vector<BmcClient> clients;
    std::vector<ControlClient> controls;
    int64_t busyUntilMs = 0; // with a delay for all, the BMC serves one request after another
    bool quit = false;
};

// Runs until `quit` or until a signal set `*stop`, then ends all connections. SIGINT and SIGTERM
// must be blocked by the caller; they are let in only where the loop waits. Ignores SIGPIPE.
void runServer(Server& server, volatile const int* stop);
int64_t monotonicMs();

} // namespace bmcsim
