// Where the agent plays: a world, a BMC, what goes wrong in this pass, and what was seen of the
// agent. It stands in place of a kernel, of programs, files, flags and logs.
#pragma once

#include "world.h"

#include "simulator/bmc.h"

#include <cstdio>
#include <set>

namespace sim {

constexpr int LEFT_ALONE = 10; // passes, of a subject whose program hung

struct Fault {
    enum { program, path, kernel, request } side = program;
    std::string what;   // in the words of makeFault
    std::string target; // command line, program or file, empty: all
    int number = 0;     // kernel: row of the interface table or NVMe drive
    int until = 0;      // the last pass
    bmcsim::Fault order = {};
    int first = 0, count = 1; // request: so many of a pass go well before, so many are hit then
};
// The fault that begins here, not yet with its end.
Fault makeFault(const World& world, Dice& dice);

struct Asked {
    bool genuine = false; // answered as the world has it
    int status = 0;
    bool garbage = false; // ended well, with something else
    bool whole = false;   // every word as the world has it, whatever the status
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
    std::FILE* trace = nullptr;

    // What was seen in this pass.
    std::map<std::string, Asked> asked;                 // by command line
    std::vector<std::pair<bmcsim::Bytes, bool>> events; // and whether the BMC took it
    int seconds = 0;                                    // lost waiting for programs
    int requests = 0;                                   // that reached the driver
    bool away = false;
    int open_drives = 0;
    int looks_left = 0;             // of a worker at the stop flag, before it is set
    std::vector<std::string> flaws; // what must not be, whatever the world is like
};
extern Stage stage;

void setStage();
void clearSight();
void note(const std::string& line); // into the trace
const Fault* faultOf(const char* what, int number = -1);
bool readable(const std::string& path);
void lookForRestart();

} // namespace sim
