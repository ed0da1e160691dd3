// Faults to order: what is to go wrong with which request, for how many requests.
#pragma once

#include "frame.h"

#include <optional>

namespace bmcsim {

// Which requests are meant: all, one command, or one command with a certain first data byte.
struct Target {
    int netFn = -1; // -1: any
    int cmd = -1;
    int first = -1;
};

bool targetMatches(const Target& target, const Message& request);
// "all", "NN/CC" or "NN/CC/BB" in hexadecimal (NetFn, command, first data byte).
bool parseTarget(const std::string& text, Target& target);
std::string targetText(const Target& target);

enum class FaultKind {
    CODE,     // completion code `argument`, nothing done
    SILENT,   // no answer, nothing done
    LATE,     // done, the answer comes after `argument` milliseconds
    SHORT,    // done, code and data cut to `argument` bytes
    LONG,     // done, code and data filled up with EE to `argument` bytes
    SEQUENCE, // done, the answer has another sequence byte
    CHECKSUM, // done, the checksum of the answer is wrong
    DROP,     // nothing done, the connection is closed
    MIDFRAME, // done, the connection is closed in the middle of the answer
    DOUBLE,   // done, the answer comes twice
    ATTENTION // done, attention commands come before the answer
};

struct Fault {
    Target target;
    FaultKind kind = FaultKind::CODE;
    int argument = 0;
    int64_t left = -1; // requests still to hit; -1: until cleared
};

struct ScriptedAnswer {
    Target target;
    Bytes bytes; // completion code and data
};

struct Faults {
    std::vector<Fault> faults;
    std::deque<ScriptedAnswer> answers; // each is used once, in order
    int delayMs = 0;                    // every answer takes this long
};

// "code C3", "late 500 2": kind, its argument where it has one, number of requests.
// Returns an error text, empty when all is well.
std::string parseFault(const std::vector<std::string>& arguments, Fault& fault);
std::string faultText(const Fault& fault);
const char* faultUsage();

// What happens to one request.
struct Plan {
    bool execute = true;
    std::optional<Bytes> answer; // instead of executing
    std::optional<Fault> fault;
};

// Decides and uses up: scripted answers first, then the first fault that matches.
Plan planRequest(Faults& faults, const Message& request);

// What goes out, and when.
struct Wire {
    Bytes bytes;
    int delayMs = 0;
    bool close = false; // after the bytes
};
Wire wireAnswer(const Faults& faults, const Plan& plan, Message answer);

} // namespace bmcsim
