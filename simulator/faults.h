// Faults to order: what is to go wrong with which request, for how many requests.
#pragma once

#include "frame.h"

namespace bmcsim {

// Which requests are meant: all, one command, or one command with a certain first data byte.
struct Target {
    int netFn = -1; // -1: any
    int cmd = -1;
    int first = -1;
};

// "all", "NN/CC" or "NN/CC/BB" in hexadecimal (NetFn, command, first data byte).
std::optional<Target> parseTarget(const std::string& text);
std::string targetText(const Target& target);

enum class FaultKind {
    CODE,     // completion code `answer`, nothing done
    ANSWER,   // completion code and data `answer`, nothing done
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

// How they are ordered: their names, and those of the arguments.
constexpr const char* FAULT_KINDS[] = {"code CC",     "answer HEX...", "silent",   "late MS",
                                       "short BYTES", "long BYTES",    "sequence", "checksum",
                                       "drop",        "midframe",      "double",   "attention"};

struct Fault {
    Target target;
    FaultKind kind = FaultKind::CODE;
    Bytes answer; // of CODE and ANSWER, else empty
    uint32_t argument = 0;
    std::optional<uint32_t> left; // requests still to hit; nothing: until cleared
};
std::string faultText(const Fault& fault);

struct Faults {
    std::vector<Fault> orders; // answers first
    uint32_t delayMs = 0;      // every answer takes this long
};
void orderFault(Faults& faults, const Fault& fault);
// Uses up the first fault that hits the request.
std::optional<Fault> meetFault(Faults& faults, const Message& request);

// What goes out, and when.
struct Wire {
    Bytes bytes;
    int64_t delayMs = 0;
    bool close = false; // after the bytes
};
// The answer to a request that met this fault, or none.
Wire wireAnswer(const Faults& faults, const std::optional<Fault>& fault, Message answer);

} // namespace bmcsim
