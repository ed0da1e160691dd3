#include "tools/program.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <mutex>
#include <poll.h>
#include <spawn.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

tool_seam tools;

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// How long the output may stay open and silent once the program itself has ended, and how often
// that is looked at.
constexpr milliseconds ORPHAN_GRACE{1000};
constexpr milliseconds LOOK_INTERVAL{250};
// How long a killed program is waited for: one that hangs in the kernel can't be ended.
constexpr milliseconds KILL_GRACE{1000};

// Variables by which an engineer makes tools print something else; "*" stands for any ending.
constexpr std::string_view LEFT_OUT[] = {
    "LC_*",          "LANG",           "LANGUAGE",   "IFCONFIG_FORMAT",
    "LIBXO_OPTIONS", "BLOCKSIZE",      "BLOCK_SIZE", "DF_BLOCK_SIZE",
    "TOP",           "BC_ENV_ARGS",    "COLUMNS",    "LINES",
    "PS_FORMAT",     "PS_PERSONALITY", "GREP_*",     "CLICOLOR*",
    "UNAME_*",       "POSIXLY_CORRECT"};

bool isLeftOut(std::string_view variable) {
    const std::string_view name = variable.substr(0, variable.find('='));
    return std::any_of(std::begin(LEFT_OUT), std::end(LEFT_OUT), [&](std::string_view pattern) {
        return pattern.back() == '*'
                   ? name.substr(0, pattern.size() - 1) == pattern.substr(0, pattern.size() - 1)
                   : name == pattern;
    });
}

std::vector<char*> programEnvironment() {
    static char locale[] = "LC_ALL=C";
    static char columns[] = "COLUMNS=1000"; // without a terminal some ps cut their lines at 79
    std::vector<char*> variables{locale, columns};
    for (char** variable = environ; *variable != nullptr; ++variable)
        if (!isLeftOut(*variable))
            variables.push_back(*variable);
    variables.push_back(nullptr);
    return variables;
}

// What a parent may have left behind: a signal that would lose the programs' statuses, descriptors
// that the programs would get (its own are closed on exec from their making).
void dropInherited() {
    std::signal(SIGCHLD, SIG_DFL);
    constexpr int MOST = 1024;
    for (int fd = STDERR_FILENO + 1; fd < MOST; ++fd)
        if (const int flags = fcntl(fd, F_GETFD); flags != -1)
            fcntl(fd, F_SETFD, flags | FD_CLOEXEC);
}

bool isProgram(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           access(path.c_str(), X_OK) == 0;
}

// Empty when no absolute folder of PATH has such a program.
std::string findProgram(const std::string& name) {
    if (name.find('/') != std::string::npos)
        return isProgram(name) ? name : "";
    const char* path = std::getenv("PATH");
    std::string_view folders = path == nullptr ? "/sbin:/bin:/usr/sbin:/usr/bin" : path;
    while (!folders.empty()) {
        const std::string_view folder = folders.substr(0, folders.find(':'));
        folders.remove_prefix(std::min(folder.size() + 1, folders.size()));
        std::string candidate = std::string(folder) + "/" + name;
        if (folder.substr(0, 1) == "/" && isProgram(candidate))
            return candidate;
    }
    return "";
}

// An open descriptor, closed with the object.
class descriptor {
  public:
    explicit descriptor(int fd) : m_fd(fd) {}
    ~descriptor() {
        if (m_fd >= 0)
            close(m_fd);
    }
    descriptor(const descriptor&) = delete;
    descriptor& operator=(const descriptor&) = delete;
    int get() const {
        return m_fd;
    }

  private:
    int m_fd;
};

// What posix_spawn is told; every step's error is kept.
class spawn_settings {
  public:
    explicit spawn_settings(int output)
        : m_actions_error(posix_spawn_file_actions_init(&m_actions)),
          m_attributes_error(posix_spawnattr_init(&m_attributes)) {
        note(m_actions_error);
        note(m_attributes_error);
        if (m_error == 0)
            set(output);
    }
    ~spawn_settings() {
        if (m_attributes_error == 0)
            posix_spawnattr_destroy(&m_attributes);
        if (m_actions_error == 0)
            posix_spawn_file_actions_destroy(&m_actions);
    }
    spawn_settings(const spawn_settings&) = delete;
    spawn_settings& operator=(const spawn_settings&) = delete;

    // The process id, or -1.
    pid_t spawn(const std::string& path, const command_line& words) const {
        if (m_error != 0)
            return -1;
        std::vector<char*> arguments;
        for (const std::string& word : words)
            arguments.push_back(const_cast<char*>(word.c_str()));
        arguments.push_back(nullptr);
        pid_t pid = -1;
        const int error = posix_spawn(&pid, path.c_str(), &m_actions, &m_attributes,
                                      arguments.data(), programEnvironment().data());
        return error == 0 ? pid : -1;
    }

  private:
    void set(int output) {
        note(posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
        note(posix_spawn_file_actions_adddup2(&m_actions, output, STDOUT_FILENO));
        note(posix_spawn_file_actions_addopen(&m_actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0));

        // Only those that a parent may have left ignored: some systems refuse to touch the rest.
        sigset_t none, defaults;
        sigemptyset(&none);
        sigemptyset(&defaults);
        for (const int sig : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGCHLD})
            sigaddset(&defaults, sig);
        note(posix_spawnattr_setpgroup(&m_attributes, 0));
        note(posix_spawnattr_setsigmask(&m_attributes, &none));
        note(posix_spawnattr_setsigdefault(&m_attributes, &defaults));
        note(posix_spawnattr_setflags(
            &m_attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF));
    }

    void note(int error) {
        if (m_error == 0)
            m_error = error;
    }

    posix_spawn_file_actions_t m_actions;
    posix_spawnattr_t m_attributes;
    const int m_actions_error, m_attributes_error; // of their making
    int m_error = 0;
};

// Processes that were killed and did not end: taken from the kernel when they do.
std::mutex stuck_guard;
std::vector<pid_t> stuck;

bool reaped(pid_t pid, int* status) {
    pid_t result;
    do
        result = waitpid(pid, status, WNOHANG);
    while (result == -1 && errno == EINTR);
    return result != 0;
}

void reapStuck() {
    const std::lock_guard<std::mutex> held(stuck_guard);
    const auto ended = [](pid_t pid) { return reaped(pid, nullptr); };
    stuck.erase(std::remove_if(stuck.begin(), stuck.end(), ended), stuck.end());
}

// A running program whose output is being read.
class running_program {
  public:
    running_program(pid_t pid, int output, const program_limits& limits)
        : m_pid(pid), m_output(output), m_limits(limits),
          m_deadline(steady_clock::now() + limits.time) {}

    program_answer answer() {
        program_answer result;
        result.end = readAll(result.text);
        if (result.end == program_end::exited && !waitUntil(m_deadline))
            result.end = program_end::timed_out;
        if (result.end != program_end::exited)
            kill(-m_pid, SIGKILL);
        if (!waitUntil(steady_clock::now() + KILL_GRACE)) {
            const std::lock_guard<std::mutex> held(stuck_guard);
            stuck.push_back(m_pid);
        } else if (result.end == program_end::exited) {
            result.exit_status =
                WIFEXITED(m_status) ? WEXITSTATUS(m_status) : 128 + WTERMSIG(m_status);
        }
        return result;
    }

  private:
    // Reads until the output ends or a limit is met.
    program_end readAll(std::string& text) {
        auto silent_until = steady_clock::time_point::max();
        for (;;) {
            const auto now = steady_clock::now();
            if (now >= m_deadline || (m_limits.given_up != nullptr && m_limits.given_up()))
                return program_end::timed_out;
            if (isEnded())
                silent_until = std::min(silent_until, now + ORPHAN_GRACE);
            if (now >= silent_until) {
                kill(-m_pid, SIGKILL);
                return program_end::exited;
            }
            const auto left = std::chrono::ceil<milliseconds>(m_deadline - now);
            pollfd output{m_output, POLLIN, 0};
            if (poll(&output, 1, static_cast<int>(std::min(left, LOOK_INTERVAL).count())) <= 0)
                continue;
            char chunk[16384];
            const ssize_t count = read(m_output, chunk, sizeof chunk);
            if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN))
                return program_end::exited;
            if (count > 0 && !keep(text, {chunk, static_cast<std::size_t>(count)}))
                return program_end::cut;
        }
    }

    // Appends what is printable. False once the limit is passed.
    bool keep(std::string& text, std::string_view chunk) {
        const std::size_t wanted = std::min(chunk.size(), m_limits.bytes - m_read);
        std::copy_if(chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(wanted),
                     std::back_inserter(text), [](char c) {
                         const auto byte = static_cast<unsigned char>(c);
                         return byte == '\n' || byte == '\t' || (byte >= 0x20 && byte != 0x7F);
                     });
        m_read += wanted;
        return wanted == chunk.size();
    }

    bool isEnded() {
        m_ended = m_ended || reaped(m_pid, &m_status);
        return m_ended;
    }

    bool waitUntil(steady_clock::time_point until) {
        for (int pause_ms = 1; !isEnded(); pause_ms = std::min(pause_ms * 2, 16)) {
            if (steady_clock::now() >= until)
                return false;
            poll(nullptr, 0, pause_ms);
        }
        return true;
    }

    const pid_t m_pid;
    const int m_output;
    const program_limits m_limits;
    const steady_clock::time_point m_deadline;
    std::size_t m_read = 0; // bytes of the output, printable or not
    bool m_ended = false;
    int m_status = 0;
};

} // namespace

program_answer runProgram(const command_line& words, const program_limits& limits) {
    static std::once_flag inherited;
    std::call_once(inherited, dropInherited);
    reapStuck();
    program_answer answer;
    const std::string path = words.empty() ? "" : findProgram(words.front());
    if (path.empty())
        return answer;

    answer.end = program_end::not_started;
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return answer;
    const descriptor from_program(ends[0]);
    pid_t pid = -1;
    {
        const descriptor to_us(ends[1]);
        // In a process whose standard descriptors are closed the pipe could land on one of them;
        // it would then be lost to the child's own set-up.
        const descriptor output(fcntl(ends[1], F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
        if (output.get() >= 0)
            pid = spawn_settings(output.get()).spawn(path, words);
    }
    return pid > 0 ? running_program(pid, from_program.get(), limits).answer() : answer;
}

std::optional<std::string> readFile(const char* path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return std::nullopt;
    std::string text(PROGRAM_BYTES, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (file.bad())
        return std::nullopt;
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

std::vector<std::string> listFolder(const char* path) {
    std::vector<std::string> names;
    DIR* folder = opendir(path);
    if (folder == nullptr)
        return names;
    while (const dirent* entry = readdir(folder))
        names.emplace_back(entry->d_name);
    closedir(folder);
    std::sort(names.begin(), names.end());
    return names;
}
