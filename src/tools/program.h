// Running a program and keeping what it prints; the one place where a process is started.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

// The program's name, then its arguments. Nothing of it is ever read by a shell.
using command_line = std::vector<std::string>;

constexpr std::chrono::seconds PROGRAM_SECONDS{20};
constexpr std::size_t PROGRAM_BYTES = 1048576;

enum class program_end {
    exited,      // came to its end; exit_status tells how
    missing,     // not in PATH: no process was made
    not_started, // no process, memory or descriptor for it, or the system refused it
    timed_out,   // passed its time; its process group was killed
    cut,         // printed more than wanted; its process group was killed
};

struct program_answer {
    program_end end = program_end::missing;
    int exit_status = 0; // of an exited program; 128 and the signal's number if one ended it
    std::string text;    // what it printed until then, printable: no control byte but \n and \t
};

struct program_limits {
    std::chrono::milliseconds time = PROGRAM_SECONDS;
    std::size_t bytes = PROGRAM_BYTES; // what is kept of the output
    bool (*given_up)() = nullptr;      // asked a few times a second: true ends the time at once
};

// Runs a program until it ends or a limit is met. It is looked for in the absolute folders of PATH.
// Standard input and standard error are /dev/null, every other descriptor is closed, LC_ALL is C,
// and no variable is handed on that changes what a tool prints. It leads a process group of its
// own, which is killed at a limit, or when the program has ended and something it left behind keeps
// the output open and silent for a second. Any thread.
program_answer runProgram(const command_line& words, const program_limits& limits);

// The whole text of a file, at most PROGRAM_BYTES; nothing when it can't be read.
std::optional<std::string> readFile(const char* path);

// The names in a folder, sorted byte by byte; none when it can't be read.
std::vector<std::string> listFolder(const char* path);

// What the collectors ask of the world beside the kernel: programs, files, folders, and the clock
// by which a pass is limited. A test may put functions of its own in place.
struct tool_seam {
    program_answer (*run)(const command_line& words, const program_limits& limits) = runProgram;
    std::optional<std::string> (*read_file)(const char* path) = readFile;
    std::vector<std::string> (*list_folder)(const char* path) = listFolder;
    std::chrono::steady_clock::time_point (*now)() = std::chrono::steady_clock::now;
};
extern tool_seam tools;
