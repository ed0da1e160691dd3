// Where the agent plays: a world, a BMC, what goes wrong in this pass, and what was seen of the
// agent. stage.cpp puts it below the agent in place of a kernel, of programs, files, flags and
// logs.
#pragma once

#include "world.h"

#include "simulator/bmc.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace sim {

constexpr int LEFT_ALONE = 10; // passes, of a subject whose program hung

enum class Trouble {
    // programs, by command line, by program, or all
    missing,
    not_started,
    hung,
    cut,
    garbage,
    nothing,
    failed,
    failed_with_text,
    // files by path, all folders
    file,
    folders,
    // kernel calls, a row of the interface table or an NVMe drive by number
    row_gone,
    row_error,
    row_count,
    addresses,
    ticks,
    memory,
    host_name,
    nvme_open,
    nvme_call,
    nvme_status,
    // requests: answered with a completion code, not at all, late, short, long; the driver fails
    bmc_code,
    bmc_silent,
    bmc_late,
    bmc_short,
    bmc_long,
    bmc_gone,
};
extern const char* const TROUBLE_NAMES[];

struct Fault {
    Trouble what;
    std::string target; // of programs and files, empty: all
    int number = 0;     // row, drive, completion code, length
    int until = 0;      // the last pass
    int command = -1;   // requests: NetFn and command, -1: any
    int first = 0;      // so many requests of a pass go well before
    int count = 1;      // so many are hit then
};

struct Asked {
    bool genuine = false; // answered as the world has it
    int status = 0;
    bool missing = false; // no such program
    bool garbage = false; // ended well, with something else
};

struct Attempt {
    bmcsim::Bytes event;
    bool taken; // the BMC took it, and said so
};

struct Stage {
    World world;
    bmcsim::Bmc bmc;
    bmcsim::Session session;
    int pass = 0;
    std::vector<Fault> faults;       // of this pass
    std::map<std::string, int> hung; // by what is left alone since: the pass
    std::set<std::string> succeeded; // command lines that have ended well
    std::string drive_map;           // the file, as the agent wrote it
    bool tracing = false;

    // What was seen in this pass.
    std::map<std::string, Asked> asked; // by command line
    std::vector<Attempt> events;
    int seconds = 0;  // lost waiting for programs
    int requests = 0; // that reached the driver
    bool away = false;
    int open_drives = 0;
    std::vector<std::string> flaws; // what must not be, whatever the world is like
    std::vector<std::string> trace;
};
extern Stage stage;

// Puts the stage's functions in place of the agent's.
void setStage();
// Begins a pass: nothing was seen yet.
void clearSight();
void note(const std::string& line); // into the trace
const Fault* faultOf(Trouble what, int number = -1);
// Who is left alone when a command line hangs.
std::string subjectOf(const std::string& command);
// Lets the BMC's restart monitor look once.
void lookForRestart();

} // namespace sim
