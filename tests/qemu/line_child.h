// A child process that is talked to line by line over its standard input and output.
#pragma once

#include <cerrno>
#include <csignal>
#include <string>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

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

    // Looks the program up in PATH. One that could not be started has ended for receive().
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
        m_pid = fork();
        if (m_pid == 0) {
            dup2(ends[1], STDIN_FILENO);
            dup2(ends[1], STDOUT_FILENO);
            execvp(words[0], words.data());
            _exit(127);
        }
        close(ends[1]);
        return m_pid > 0;
    }

    void send(const std::string& line) {
        ::send(m_socket, (line + "\n").data(), line.size() + 1, MSG_NOSIGNAL);
    }

    // The next line, without its end. Empty when the process has ended or is silent for 10 s.
    std::string receive() {
        std::string line;
        for (char byte = 0;; line += byte) {
            ssize_t count = 0;
            while ((count = recv(m_socket, &byte, 1, 0)) < 0 && errno == EINTR) {
            }
            if (count <= 0)
                return "";
            if (byte == '\n')
                return line;
        }
    }

  private:
    pid_t m_pid = -1;
    int m_socket = -1;
};
