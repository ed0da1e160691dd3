// The one way of running a command and reading what it prints.
#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>

constexpr int SHELL_DEADLINE_S = 60;
constexpr int SHELL_STORAGE_DEADLINE_S = 300;
constexpr std::size_t SHELL_PIECE_SIZE = 255;

// A command under the system shell, its standard output readable here. Standard input is
// /dev/null, LC_ALL=C, signals at their defaults, every other descriptor closed, a process group
// of its own. When `deadline` seconds have passed since the start, or the shell has ended but
// something it left behind keeps the output open and silent, the whole group is killed and what
// was printed until then counts; passing the deadline writes `label` with "timed out" to the
// error log. Names and addresses go into the command text by way of shellOperand.
class shell_capture {
  public:
    shell_capture(const std::string& command, const char* label, int deadline_s = SHELL_DEADLINE_S);
    ~shell_capture();
    shell_capture(const shell_capture&) = delete;
    shell_capture& operator=(const shell_capture&) = delete;

    // False when no child process could be made.
    bool started() const {
        return m_pid > 0;
    }

    // Reads up to `limit` characters, up to and including a newline. False at the end of the
    // output. Zero bytes are left out.
    bool readPiece(std::string& piece, std::size_t limit = SHELL_PIECE_SIZE);

    // True once the command has passed its deadline.
    bool timedOut() const {
        return m_timed_out;
    }

    // Closes the output and waits for the command, until its deadline at most.
    void close();

  private:
    bool fill();
    void killGroup();
    void expire();
    void reap(bool block);

    const char* m_label;
    pid_t m_pid = -1;
    int m_fd = -1;
    bool m_reaped = false;
    bool m_killed = false;
    bool m_timed_out = false;
    std::string m_buffer;
    std::size_t m_position = 0;
    std::chrono::steady_clock::time_point m_deadline;
};

// Runs the command and takes the first piece it prints (at most 255 characters, newline
// included). False, with `line` empty, when it could not be started or printed nothing.
bool captureLine(const std::string& command, const char* label, std::string& line);

// Like captureLine, without the newline; empty when nothing was printed.
std::string captureValue(const std::string& command, const char* label);

// Runs the command, joining its lines with `separator` (each line cut to pieces of 255
// characters); the result is at most 256 characters. `started` tells whether it could be started.
std::string captureJoined(const std::string& command, const char* label, const char* separator,
                          bool* started = nullptr);
