#include "kcs/qemu/line_child.h"

#include <cerrno>
#include <csignal>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

bool line_child::start(std::vector<std::string> arguments) {
    int in[2], out[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, in) != 0 ||
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, out) != 0)
        return false;
    m_in = in[0];
    m_out = out[0];
    std::vector<char*> words;
    for (std::string& argument : arguments)
        words.push_back(argument.data());
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[1], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    const int error = posix_spawnp(&m_pid, words[0], &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(in[1]);
    close(out[1]);
    if (error != 0)
        m_pid = -1;
    return error == 0;
}

line_child::~line_child() {
    close(m_in);
    close(m_out);
    if (m_pid < 0)
        return;
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
}

void line_child::send(const std::string& line) {
    const std::string text = line + "\n";
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t count = ::send(m_in, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR)
            return;
        sent += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
}

std::string line_child::receive() {
    std::size_t end = 0;
    while ((end = m_buffer.find('\n')) == std::string::npos) {
        pollfd output{m_out, POLLIN, 0};
        char chunk[4096];
        const int ready = poll(&output, 1, 10000);
        const ssize_t count = ready > 0 ? recv(m_out, chunk, sizeof chunk, 0) : ready;
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return "";
        m_buffer.append(chunk, static_cast<std::size_t>(count));
    }
    const std::string line = m_buffer.substr(0, end);
    m_buffer.erase(0, end + 1);
    return line;
}
