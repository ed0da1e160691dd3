// bmcsim: a BMC behind a socket.
#include "server.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sys/socket.h>
#include <unistd.h>

namespace bmcsim {

static volatile int g_stop = 0;

struct Options {
    std::vector<std::string> paths;
    std::vector<int> ports;
    std::vector<std::string> controls;
    std::vector<std::string> commands; // carried out before anybody is served
};

static void noteSignal(int) {
    g_stop = 1;
}

static void printUsage(FILE* stream) {
    fprintf(stream,
            "usage: bmcsim [--listen PATH] [--tcp PORT] [--control PATH] [--do COMMAND]\n"
            "              [--load FILE]\n"
            "       bmcsim --ask PATH COMMAND...\n"
            "  --listen PATH   Unix socket where the BMC answers\n"
            "  --tcp PORT      the same on a loopback port (0: a free one, which is printed)\n"
            "  --control PATH  Unix socket for commands; standard input takes them as well\n"
            "  --do COMMAND    a command to carry out first\n"
            "  --load FILE     commands to carry out first, one a line\n"
            "  --ask PATH      send COMMAND to a running simulator, print its reply;\n"
            "                  status 0 for ok, 1 for an error, 2 when nobody answers in 5 s\n"
            "Each option may be given several times. Replies end with \"ok\" or \"error: ...\".\n"
            "Commands:\n%s",
            commandUsage().c_str());
}

static bool loadCommands(const std::string& path, std::vector<std::string>& commands) {
    std::ifstream file(path);
    std::string line;
    while (std::getline(file, line))
        commands.push_back(line);
    return file.eof() && !commands.empty();
}

static bool takeOption(const std::string& name, const std::string& value, Options& options) {
    int64_t port = 0;
    if (name == "--listen")
        options.paths.push_back(value);
    else if (name == "--control")
        options.controls.push_back(value);
    else if (name == "--do")
        options.commands.push_back(value);
    else if (name == "--tcp" && parseNumber(value, 0, 65535, port))
        options.ports.push_back(static_cast<int>(port));
    else if (name != "--load" || !loadCommands(value, options.commands))
        return false;
    return true;
}

// A simulator that is just starting may not listen yet.
static Descriptor connectPatiently(const std::string& path) {
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

static int ask(const std::string& path, const std::string& command) {
    const Descriptor client = connectPatiently(path);
    if (client.get() < 0) {
        fprintf(stderr, "bmcsim: nobody answers at %s\n", path.c_str());
        return 2;
    }
    const std::string line = command + "\n";
    size_t sent = 0;
    while (sent < line.size()) {
        const ssize_t count =
            send(client.get(), line.data() + sent, line.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            break;
        sent += static_cast<size_t>(count);
    }
    shutdown(client.get(), SHUT_WR); // the simulator closes once it has replied
    std::string reply;
    char buffer[4096];
    ssize_t count = 0;
    while ((count = read(client.get(), buffer, sizeof buffer)) > 0)
        reply.append(buffer, static_cast<size_t>(count));
    const bool good =
        reply == "ok\n" || (reply.size() > 3 && reply.rfind("\nok\n") == reply.size() - 4);
    fputs(good ? reply.substr(0, reply.size() - 3).c_str() : reply.c_str(), good ? stdout : stderr);
    return good ? 0 : 1;
}

static bool listenAll(Server& server, const Options& options) {
    std::string error;
    for (const std::string& path : options.paths)
        server.bmcListeners.push_back({path, 0, {}});
    for (const int port : options.ports)
        server.bmcListeners.push_back({"", port, {}});
    for (const std::string& path : options.controls)
        server.controlListeners.push_back({path, 0, {}});
    for (Listener& listener : server.bmcListeners) {
        if (!openListener(listener, error))
            break;
        if (listener.path.empty())
            printf("bmcsim: listening on port %d\n", listener.port);
        else
            printf("bmcsim: listening on %s\n", listener.path.c_str());
    }
    for (Listener& listener : server.controlListeners)
        if (error.empty())
            openListener(listener, error);
    if (!error.empty())
        fprintf(stderr, "bmcsim: %s\n", error.c_str());
    return error.empty();
}

static void closeAll(Server& server) {
    for (Listener& listener : server.bmcListeners)
        closeListener(listener);
    for (Listener& listener : server.controlListeners)
        closeListener(listener);
}

static bool carryOut(Server& server, const std::vector<std::string>& commands) {
    for (const std::string& command : commands) {
        const Outcome outcome = runCommand(server.bmc, command);
        if (outcome.error.empty())
            continue;
        fprintf(stderr, "bmcsim: %s: %s\n", command.c_str(), outcome.error.c_str());
        return false;
    }
    return true;
}

static void catchSignals() {
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGINT);
    sigaddset(&blocked, SIGTERM);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    struct sigaction action = {};
    action.sa_handler = noteSignal;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    signal(SIGPIPE, SIG_IGN);
}

static int serve(const Options& options) {
    catchSignals();
    Server server;
    server.bmc.ledger.nowMs = monotonicMs();
    server.bmc.ledger.originMs = server.bmc.ledger.nowMs;
    server.bmc.startMs = server.bmc.ledger.nowMs;
    setSelTime(server.bmc.sel, server.bmc.ledger, static_cast<uint32_t>(time(nullptr)));
    if (!carryOut(server, options.commands))
        return 1;
    const bool listening = listenAll(server, options);
    if (listening) {
        fflush(stdout);
        ControlClient standard;
        standard.input = STDIN_FILENO;
        standard.output = STDOUT_FILENO;
        server.controls.push_back(std::move(standard));
        runServer(server, &g_stop);
    }
    closeAll(server);
    return listening ? 0 : 1;
}

static std::string joined(const std::vector<std::string>& arguments, size_t from) {
    std::string text;
    for (size_t i = from; i < arguments.size(); i++)
        text += (i > from ? " " : "") + arguments[i];
    return text;
}

static int simulate(const std::vector<std::string>& arguments) {
    if (!arguments.empty() && arguments[0] == "--help") {
        printUsage(stdout);
        return 0;
    }
    if (arguments.size() > 2 && arguments[0] == "--ask")
        return ask(arguments[1], joined(arguments, 2));
    Options options;
    for (size_t i = 0; i < arguments.size(); i += 2)
        if (i + 1 == arguments.size() || !takeOption(arguments[i], arguments[i + 1], options)) {
            fprintf(stderr, "bmcsim: %s: wrong option or value (see --help)\n",
                    arguments[i].c_str());
            return 1;
        }
    if (options.paths.empty() && options.ports.empty()) {
        printUsage(stderr);
        return 1;
    }
    return serve(options);
}

} // namespace bmcsim

int main(int count, char** arguments) {
    return bmcsim::simulate(std::vector<std::string>(arguments + 1, arguments + count));
}
