#include "faults.h"

#include <algorithm>

namespace bmcsim {

struct KindWords {
    FaultKind kind;
    const char* word;
    const char* argument; // its name, nullptr when there is none
    int64_t low, high;
};

static const KindWords KINDS[] = {
    {FaultKind::CODE, "code", "CC", 0, 255},
    {FaultKind::SILENT, "silent", nullptr, 0, 0},
    {FaultKind::LATE, "late", "MS", 0, 3600000},
    {FaultKind::SHORT, "short", "BYTES", 0, 1023},
    {FaultKind::LONG, "long", "BYTES", 1, 65535},
    {FaultKind::SEQUENCE, "sequence", nullptr, 0, 0},
    {FaultKind::CHECKSUM, "checksum", nullptr, 0, 0},
    {FaultKind::DROP, "drop", nullptr, 0, 0},
    {FaultKind::MIDFRAME, "midframe", nullptr, 0, 0},
    {FaultKind::DOUBLE, "double", nullptr, 0, 0},
    {FaultKind::ATTENTION, "attention", nullptr, 0, 0},
};

const char* faultUsage() {
    return "code CC | silent | late MS | short BYTES | long BYTES | sequence | checksum | drop |\n"
           "    midframe | double | attention";
}

bool targetMatches(const Target& target, const Message& request) {
    if (target.netFn >= 0 && target.netFn != request.netFn)
        return false;
    if (target.cmd >= 0 && target.cmd != request.cmd)
        return false;
    return target.first < 0 || (!request.data.empty() && request.data[0] == target.first);
}

bool parseTarget(const std::string& text, Target& target) {
    target = Target();
    if (text == "all")
        return true;
    const std::vector<std::string> parts = splitText(text, "/");
    int* const fields[] = {&target.netFn, &target.cmd, &target.first};
    if (parts.size() < 2 || parts.size() > 3)
        return false;
    for (size_t i = 0; i < parts.size() && i < std::size(fields); i++) {
        int64_t value = 0;
        if (!parseNumber("0x" + parts[i], 0, i == 0 ? 0x3F : 0xFF, value))
            return false;
        *fields[i] = static_cast<int>(value);
    }
    return true;
}

std::string targetText(const Target& target) {
    if (target.netFn < 0)
        return "all";
    const std::string text = format("%02X/%02X", target.netFn, target.cmd);
    return target.first < 0 ? text : text + format("/%02X", target.first);
}

std::string parseFault(const std::vector<std::string>& arguments, Fault& fault) {
    if (arguments.size() < 2 || !parseTarget(arguments[0], fault.target))
        return "fault TARGET KIND [ARGUMENT] [COUNT]; TARGET is all, NN/CC or NN/CC/BB";
    const auto* const kind = std::find_if(std::begin(KINDS), std::end(KINDS), [&](const auto& row) {
        return arguments[1] == row.word;
    });
    if (kind == std::end(KINDS))
        return std::string("KIND is ") + faultUsage();
    fault.kind = kind->kind;
    size_t at = 2;
    if (kind->argument != nullptr) {
        int64_t value = 0;
        const std::string prefix = fault.kind == FaultKind::CODE ? "0x" : "";
        if (at >= arguments.size() ||
            !parseNumber(prefix + arguments[at], kind->low, kind->high, value))
            return std::string("needs ") + kind->argument;
        fault.argument = static_cast<int>(value);
        at++;
    }
    fault.left = -1;
    if (at < arguments.size() && !parseNumber(arguments[at++], 1, 1000000000, fault.left))
        return "COUNT is a number of requests";
    return at < arguments.size() ? "too many arguments" : "";
}

std::string faultText(const Fault& fault) {
    for (const KindWords& row : KINDS) {
        if (row.kind != fault.kind)
            continue;
        std::string text = targetText(fault.target) + " " + row.word;
        if (fault.kind == FaultKind::CODE)
            text += format(" %02X", fault.argument);
        else if (row.argument != nullptr)
            text += format(" %d", fault.argument);
        return text + (fault.left < 0
                           ? " until cleared"
                           : format(" for %lld more", static_cast<long long>(fault.left)));
    }
    return "";
}

Plan planRequest(Faults& faults, const Message& request) {
    Plan plan;
    const auto answer =
        std::find_if(faults.answers.begin(), faults.answers.end(),
                     [&](const auto& entry) { return targetMatches(entry.target, request); });
    if (answer != faults.answers.end()) {
        plan.execute = false;
        plan.answer = answer->bytes;
        faults.answers.erase(answer);
        return plan;
    }
    const auto fault =
        std::find_if(faults.faults.begin(), faults.faults.end(),
                     [&](const auto& entry) { return targetMatches(entry.target, request); });
    if (fault == faults.faults.end())
        return plan;
    plan.fault = *fault;
    plan.execute = fault->kind != FaultKind::CODE && fault->kind != FaultKind::SILENT &&
                   fault->kind != FaultKind::DROP;
    if (fault->left > 0 && --fault->left == 0)
        faults.faults.erase(fault);
    return plan;
}

static void bendAnswer(const Fault& fault, Message& answer) {
    const auto size = static_cast<size_t>(fault.argument);
    if (fault.kind == FaultKind::SHORT && answer.data.size() > size)
        answer.data.resize(size);
    if (fault.kind == FaultKind::LONG && answer.data.size() < size)
        answer.data.resize(size, 0xEE);
    if (fault.kind == FaultKind::SEQUENCE)
        answer.sequence = static_cast<uint8_t>(answer.sequence + 0x55);
}

Wire wireAnswer(const Faults& faults, const Plan& plan, Message answer) {
    Wire wire;
    wire.delayMs = faults.delayMs;
    if (!plan.fault) {
        wire.bytes = encodeMessage(answer);
        return wire;
    }
    const Fault& fault = *plan.fault;
    bendAnswer(fault, answer);
    wire.close = fault.kind == FaultKind::DROP || fault.kind == FaultKind::MIDFRAME;
    if (fault.kind == FaultKind::LATE)
        wire.delayMs += fault.argument;
    if (fault.kind == FaultKind::SILENT || fault.kind == FaultKind::DROP)
        return wire;
    wire.bytes = encodeMessage(answer, fault.kind == FaultKind::CHECKSUM ? 1 : 0);
    const Bytes once = wire.bytes;
    if (fault.kind == FaultKind::MIDFRAME)
        wire.bytes.resize(once.size() / 2);
    if (fault.kind == FaultKind::DOUBLE)
        wire.bytes.insert(wire.bytes.end(), once.begin(), once.end());
    if (fault.kind == FaultKind::ATTENTION)
        for (const Bytes& command : {Bytes{0x01}, Bytes{0x00}, Bytes{0x33}}) { // 0x33: unknown
            const Bytes control = encodeControl(command);
            wire.bytes.insert(wire.bytes.begin(), control.begin(), control.end());
        }
    return wire;
}

} // namespace bmcsim
