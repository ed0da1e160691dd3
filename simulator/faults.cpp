#include "faults.h"

#include <algorithm>

namespace bmcsim {

namespace {

bool hits(const Target& target, const Message& request) {
    return (target.netFn < 0 || target.netFn == request.netFn) &&
           (target.cmd < 0 || target.cmd == request.cmd) &&
           (target.first < 0 || (!request.data.empty() && target.first == request.data[0]));
}

Bytes& prepend(Bytes& bytes, const Bytes& before) {
    bytes.insert(bytes.begin(), before.begin(), before.end());
    return bytes;
}

} // namespace

std::optional<Target> parseTarget(const std::string& text) {
    if (text == "all")
        return Target();
    const Lines parts = splitText(text, "/");
    if (parts.size() < 2 || parts.size() > 3)
        return {};
    int numbers[] = {-1, -1, -1};
    for (size_t i = 0; i < parts.size(); i++) {
        const auto number = parseNumber("0x" + parts[i], i == 0 ? 0x3F : 0xFF);
        if (!number)
            return {};
        numbers[i] = static_cast<int>(*number);
    }
    return Target{numbers[0], numbers[1], numbers[2]};
}

std::string targetText(const Target& target) {
    if (target.netFn < 0)
        return "all";
    const std::string text = format("%02X/%02X", target.netFn, target.cmd);
    return target.first < 0 ? text : text + format("/%02X", target.first);
}

std::string faultText(const Fault& fault) {
    const Lines kind = words(FAULT_KINDS[static_cast<size_t>(fault.kind)]);
    const std::string text = targetText(fault.target) + " " + kind[0];
    const std::string argument = kind.size() == 1       ? ""
                                 : fault.answer.empty() ? format(" %u", fault.argument)
                                                        : " " + hexText(fault.answer);
    return text + argument + (fault.left ? format(" for %u more", *fault.left) : " until cleared");
}

void orderFault(Faults& faults, const Fault& fault) {
    const auto behind =
        std::find_if(faults.orders.begin(), faults.orders.end(),
                     [](const Fault& other) { return other.kind != FaultKind::ANSWER; });
    faults.orders.insert(fault.kind == FaultKind::ANSWER ? behind : faults.orders.end(), fault);
}

std::optional<Fault> meetFault(Faults& faults, const Message& request) {
    for (auto fault = faults.orders.begin(); fault != faults.orders.end(); ++fault) {
        if (!hits(fault->target, request))
            continue;
        const Fault met = *fault;
        if (fault->left && --*fault->left == 0)
            faults.orders.erase(fault);
        return met;
    }
    return {};
}

Wire wireAnswer(const Faults& faults, const std::optional<Fault>& fault, Message answer) {
    const auto is = [&](FaultKind kind) { return fault && fault->kind == kind; };
    Wire wire;
    wire.delayMs = int64_t{faults.delayMs} + (is(FaultKind::LATE) ? fault->argument : 0);
    wire.close = is(FaultKind::DROP) || is(FaultKind::MIDFRAME);
    if (is(FaultKind::SILENT) || is(FaultKind::DROP))
        return wire;
    if (is(FaultKind::SEQUENCE))
        answer.sequence = static_cast<uint8_t>(answer.sequence + 0x55);
    wire.bytes = encodeMessage(answer, is(FaultKind::CHECKSUM) ? 1 : 0);
    if (is(FaultKind::MIDFRAME))
        wire.bytes.resize(wire.bytes.size() / 2);
    if (is(FaultKind::DOUBLE))
        wire.bytes = prepend(wire.bytes, Bytes(wire.bytes));
    if (is(FaultKind::ATTENTION))
        for (const uint8_t command : Bytes{0x01, 0x00, 0x33}) // 0x33: unknown
            prepend(wire.bytes, encodeControl({command}));
    return wire;
}

} // namespace bmcsim
