// bmcsim: a BMC behind a socket.
#include "server.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <sys/socket.h>
#include <unistd.h>

namespace bmcsim {

namespace {

volatile int g_stop = 0;

void noteSignal(int) {
    g_stop = 1;
}

void printUsage(FILE* stream) {
    fprintf(stream,
            "usage: bmcsim --listen PATH [--control PATH] [--do COMMAND]...\n"
            "       bmcsim --ask PATH COMMAND...\n"
            "  --listen PATH   Unix socket where the BMC answers\n"
            "  --control PATH  Unix socket for commands; standard input takes them as well\n"
            "  --do COMMAND    a command to carry out first\n"
            "  --ask PATH      send COMMAND to a running simulator, print its reply;\n"
            "                  status 0 for ok, 1 for an error, 2 when nobody answers in 5 s\n"
            "Replies end with \"ok\" or \"error: ...\".\n"
            "Commands:\n%s",
            commandUsage().c_str());
}

// A simulator that is just starting may not listen yet.
Descriptor connectPatiently(const std::string& path) {
    constexpr int TRIES = 100;
    constexpr struct timespec PAUSE = {0, 50 * 1000000};
    for (int i = 0; i < TRIES; i++) {
        Descriptor client = connectUnix(path);
        if (client.get() >= 0 || (errno != ENOENT && errno != ECONNREFUSED))
            return client;
        nanosleep(&PAUSE, nullptr);
    }
    return Descriptor();
}

int ask(const std::string& path, const Lines& command) {
    const Descriptor client = connectPatiently(path);
    if (client.get() < 0) {
        fprintf(stderr, "bmcsim: nobody answers at %s\n", path.c_str());
        return 2;
    }
    std::string line;
    for (const std::string& word : command)
        line += (line.empty() ? "" : " ") + word;
    line += "\n";
    send(client.get(), line.data(), line.size(), MSG_NOSIGNAL); // blocks until all is sent
    shutdown(client.get(), SHUT_WR); // the simulator closes once it has replied
    std::string reply = "\n";
    char buffer[4096];
    ssize_t count = 0;
    while ((count = read(client.get(), buffer, sizeof buffer)) > 0)
        reply.append(buffer, static_cast<size_t>(count));
    const bool good = reply.size() > 3 && reply.compare(reply.size() - 4, 4, "\nok\n") == 0;
    reply.resize(reply.size() - (good ? 3 : 0));
    fputs(reply.c_str() + 1, good ? stdout : stderr);
    return good ? 0 : 1;
}

void catchSignals() {
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int number : {SIGINT, SIGTERM}) {
        sigaddset(&blocked, number);
        signal(number, noteSignal);
    }
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
}

// Carries out the commands and listens. Returns an error text, empty when all is well.
std::string begin(Server& server, const Lines& commands) {
    server.bmc.ledger.nowMs = server.bmc.ledger.originMs = server.bmc.startMs = monotonicMs();
    setSelTime(server.bmc.sel, server.bmc.ledger, static_cast<uint32_t>(time(nullptr)));
    for (const std::string& command : commands) {
        const std::string error = runCommand(server.bmc, command).error;
        if (!error.empty())
            return format("%s: %s", command.c_str(), error.c_str());
    }
    std::string error = openListener(server.bmcListener);
    if (error.empty() && !server.controlListener.path.empty())
        error = openListener(server.controlListener);
    return error;
}

int serve(Server& server, const Lines& commands) {
    catchSignals();
    const std::string error = begin(server, commands);
    if (error.empty()) {
        printf("bmcsim: listening on %s\n", server.bmcListener.path.c_str());
        fflush(stdout);
        server.controls.push_back({Descriptor(), STDIN_FILENO, STDOUT_FILENO});
        runServer(server, &g_stop);
    } else {
        fprintf(stderr, "bmcsim: %s\n", error.c_str());
    }
    closeListener(server.bmcListener);
    closeListener(server.controlListener);
    return error.empty() ? 0 : 1;
}

int simulate(const Lines& arguments) {
    Server server;
    Lines commands;
    if (arguments.size() > 2 && arguments[0] == "--ask")
        return ask(arguments[1], Lines(arguments.begin() + 2, arguments.end()));
    bool understood = arguments.size() % 2 == 0;
    for (size_t i = 0; i + 1 < arguments.size(); i += 2) {
        if (arguments[i] == "--listen")
            server.bmcListener.path = arguments[i + 1];
        else if (arguments[i] == "--control")
            server.controlListener.path = arguments[i + 1];
        else if (arguments[i] == "--do")
            commands.push_back(arguments[i + 1]);
        else
            understood = false;
    }
    if (understood && !server.bmcListener.path.empty())
        return serve(server, commands);
    const bool wanted = arguments == Lines{"--help"};
    printUsage(wanted ? stdout : stderr);
    return wanted ? 0 : 1;
}

} // namespace

} // namespace bmcsim

int main(int count, char** arguments) {
    return bmcsim::simulate(bmcsim::Lines(arguments + 1, arguments + count));
}
