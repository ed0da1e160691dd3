#include "shell.h"

#include "config/logs.h"
#include "text.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// How long the output may stay open and silent once the shell itself has ended, and how often
// that is looked at.
constexpr milliseconds ORPHAN_GRACE{1000};
constexpr milliseconds LOOK_INTERVAL{250};
constexpr milliseconds REAP_INTERVAL{10};

constexpr std::size_t JOINED_SIZE = 256;

// The environment with LC_ALL=C, so that every tool prints what the collectors expect.
std::vector<char*> commandEnvironment() {
    static char locale[] = "LC_ALL=C";
    std::vector<char*> variables{locale};
    for (char** variable = environ; *variable != nullptr; ++variable)
        if (std::strncmp(*variable, "LC_ALL=", 7) != 0)
            variables.push_back(*variable);
    variables.push_back(nullptr);
    return variables;
}

struct spawn_settings {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;

    explicit spawn_settings(int output) {
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);

        // Only those that a parent may have left ignored: some systems refuse to touch the rest.
        sigset_t none, defaults;
        sigemptyset(&none);
        sigemptyset(&defaults);
        for (const int sig : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGCHLD})
            sigaddset(&defaults, sig);
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setpgroup(&attributes, 0);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &defaults);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK |
                                                  POSIX_SPAWN_SETSIGDEF);
    }
    ~spawn_settings() {
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
    }
    spawn_settings(const spawn_settings&) = delete;
    spawn_settings& operator=(const spawn_settings&) = delete;
};

} // namespace

shell_capture::shell_capture(const std::string& command, const char* label, int deadline_s)
    : m_label(label), m_deadline(steady_clock::now() + std::chrono::seconds(deadline_s)) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return;
    // In a daemon whose standard descriptors are closed the pipe could land on one of them; it
    // would then be lost to the child's own set-up.
    const int output = fcntl(ends[1], F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::close(ends[1]);
    if (output >= 0) {
        const spawn_settings settings(output);
        std::string text = command;
        char shell[] = "sh", option[] = "-c";
        char* arguments[] = {shell, option, text.data(), nullptr};
        if (posix_spawn(&m_pid, "/bin/sh", &settings.actions, &settings.attributes, arguments,
                        commandEnvironment().data()) != 0)
            m_pid = -1;
        ::close(output);
    }
    if (m_pid > 0)
        m_fd = ends[0];
    else
        ::close(ends[0]);
}

shell_capture::~shell_capture() {
    close();
}

void shell_capture::killGroup() {
    ::kill(-m_pid, SIGKILL);
    m_killed = true;
}

void shell_capture::expire() {
    m_timed_out = true;
    if (!m_killed)
        printErrLog(m_label, "timed out");
    killGroup();
}

void shell_capture::reap(bool block) {
    pid_t result;
    do
        result = waitpid(m_pid, nullptr, block ? 0 : WNOHANG);
    while (result == -1 && errno == EINTR);
    m_reaped = m_reaped || result == m_pid || result == -1;
}

// Reads more output into the buffer. False at its end, after closing it.
bool shell_capture::fill() {
    auto silent_until = steady_clock::time_point::max();
    while (m_fd >= 0) {
        const auto now = steady_clock::now();
        if (now >= m_deadline) {
            expire();
            break;
        }
        if (!m_reaped)
            reap(false);
        if (m_reaped)
            silent_until = std::min(silent_until, now + ORPHAN_GRACE);
        if (now >= silent_until) {
            killGroup();
            break;
        }
        const auto wait =
            std::min(std::chrono::duration_cast<milliseconds>(m_deadline - now) + milliseconds(1),
                     LOOK_INTERVAL);
        pollfd output{m_fd, POLLIN, 0};
        if (poll(&output, 1, static_cast<int>(wait.count())) <= 0)
            continue;
        char chunk[4096];
        const ssize_t count = read(m_fd, chunk, sizeof chunk);
        if (count > 0) {
            m_buffer.erase(0, m_position);
            m_position = 0;
            std::remove_copy(chunk, chunk + count, std::back_inserter(m_buffer), '\0');
            return true;
        }
        if (count == 0 || (errno != EINTR && errno != EAGAIN))
            break;
    }
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
    return false;
}

bool shell_capture::readPiece(std::string& piece, std::size_t limit) {
    piece.clear();
    for (;;) {
        const std::size_t newline = m_buffer.find('\n', m_position);
        const std::size_t held = m_buffer.size() - m_position;
        if (newline != std::string::npos || held >= limit || (m_fd < 0 && held > 0)) {
            const std::size_t line = newline == std::string::npos ? held : newline + 1 - m_position;
            piece.assign(m_buffer, m_position, std::min(line, limit));
            m_position += piece.size();
            return true;
        }
        if (!fill() && m_buffer.size() == m_position)
            return false;
    }
}

void shell_capture::close() {
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
    while (m_pid > 0 && !m_reaped) {
        reap(false);
        if (m_reaped)
            break;
        if (steady_clock::now() >= m_deadline) {
            expire();
            reap(true);
        } else {
            poll(nullptr, 0, static_cast<int>(REAP_INTERVAL.count()));
        }
    }
    m_pid = -1;
}

bool captureLine(const std::string& command, const char* label, std::string& line) {
    shell_capture shell(command, label);
    return shell.readPiece(line);
}

std::string captureValue(const std::string& command, const char* label) {
    std::string line;
    captureLine(command, label, line);
    dropNewline(line);
    return line;
}

std::string captureJoined(const std::string& command, const char* label, const char* separator,
                          bool* started) {
    shell_capture shell(command, label);
    if (started != nullptr)
        *started = shell.started();
    std::string joined, piece;
    bool separator_due = false;
    while (joined.size() < JOINED_SIZE && shell.readPiece(piece)) {
        if (separator_due)
            joined += separator;
        separator_due = dropNewline(piece);
        joined += piece;
    }
    joined.resize(std::min(joined.size(), JOINED_SIZE));
    return joined;
}
