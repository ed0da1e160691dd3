// A child process that is talked to line by line over its standard input and output.
#pragma once

#include <cerrno>
#include <csignal>
#include <spawn.h>
#include <string>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

class line_child {
  public:
    line_child() = default;
    ~line_child() {
        close(m_socket);
        if (m_pid > 0 && kill(m_pid, SIGKILL) == 0)
            waitpid(m_pid, nullptr, 0);
    }
    line_child(const line_child&) = delete;
    line_child& operator=(const line_child&) = delete;

    // False when the program, which is looked up in PATH, could not be started.
    bool start(std::vector<std::string> arguments) {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
            return false;
        m_socket = ends[0];
        const timeval limit{10, 0};
        setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        std::vector<char*> words;
        for (std::string& argument : arguments)
            words.push_back(argument.data());
        words.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        for (const int standard : {STDIN_FILENO, STDOUT_FILENO})
            posix_spawn_file_actions_adddup2(&actions, ends[1], standard);
        const int error = posix_spawnp(&m_pid, words[0], &actions, nullptr, words.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        return error == 0;
    }

    void send(const std::string& line) {
        ::send(m_socket, (line + "\n").data(), line.size() + 1, MSG_NOSIGNAL);
    }

    // The next line, without its end. Empty when the process has ended or is silent for 10 s.
    std::string receive() {
        std::size_t end = 0;
        while ((end = m_buffer.find('\n')) == std::string::npos) {
            char chunk[4096];
            const ssize_t count = recv(m_socket, chunk, sizeof chunk, 0);
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

  private:
    pid_t m_pid = -1;
    int m_socket = -1;
    std::string m_buffer;
};
