#include "bmc.h"

#include "records.h"

#include <algorithm>

namespace bmcsim {

constexpr uint8_t NETFN_SENSOR = 0x04;
constexpr uint8_t NETFN_APP = 0x06;
constexpr uint8_t NETFN_STORAGE = 0x0A;
constexpr uint8_t NETFN_OEM = 0x30;
constexpr uint8_t CMD_SET_PARAMETER = 0x58;
constexpr uint8_t CMD_GET_PARAMETER = 0x59;

Session newSession(Bmc& bmc) {
    Session session;
    session.id = ++bmc.sessions;
    session.generation = bmc.generation;
    return session;
}

static bool isSetParameter(const Message& request) {
    return request.netFn == NETFN_APP && request.cmd == CMD_SET_PARAMETER;
}

static uint8_t selectorOf(const Message& request) {
    const size_t at = request.cmd == CMD_GET_PARAMETER ? 1 : 0;
    return at < request.data.size() ? request.data[at] : 0;
}

static bool concernsSlot(const Message& request) {
    if (request.netFn != NETFN_APP)
        return false;
    const uint8_t selector = selectorOf(request);
    return (request.cmd == CMD_GET_PARAMETER && selector == SELECTOR_COMMAND) ||
           (request.cmd == CMD_SET_PARAMETER &&
            (selector == SELECTOR_COMMAND || selector == SELECTOR_RESULT));
}

static uint8_t uploadChunk(Bmc& bmc, Session& session, const Message& request, bool refused) {
    Completed value;
    const uint8_t code =
        setParameter(bmc.parameters, session, bmc.ledger, request.data, refused, value);
    if (value.selector == 0)
        return code;
    Traffic& traffic = bmc.traffic[{request.netFn, request.cmd, value.selector}];
    traffic.values++;
    traffic.needed += std::max<size_t>(1, (value.text.size() + 31) / 32);
    if (value.selector == SELECTOR_COMMAND || value.selector == SELECTOR_RESULT)
        slotAnswer(bmc.slot, session.id, bmc.ledger, value);
    return code;
}

static uint8_t appRequest(Bmc& bmc, Session& session, const Message& request, Bytes& out) {
    if (request.cmd == CMD_SET_PARAMETER)
        return uploadChunk(bmc, session, request, false);
    if (request.cmd == CMD_GET_PARAMETER)
        return fetchCommand(bmc.slot, session.id, bmc.ledger, request.data, out);
    return appCommand(bmc.identity, request.cmd, request.data, out);
}

static uint8_t oemRequest(Bmc& bmc, const Message& request, Bytes& out) {
    switch (request.cmd) {
    case 0x70:
        return panelCommand(bmc.panel, bmc.ledger, request.data, out);
    case 0xA0:
        return fileCommand(bmc.files, bmc.ledger, request.data, out);
    case WATCHDOG_COMMAND:
    case WATCHDOG_COMMAND_OLD:
        return watchdogCommand(bmc.watchdog, bmc.ledger, request.cmd, request.data, out);
    default:
        return CC_INVALID_COMMAND;
    }
}

static uint8_t execute(Bmc& bmc, Session& session, const Message& request, Bytes& out) {
    switch (request.netFn) {
    case NETFN_APP:
        return appRequest(bmc, session, request, out);
    case NETFN_STORAGE:
        return storageCommand(bmc.sel, bmc.ledger, request.cmd, request.data, out);
    case NETFN_SENSOR:
        return request.cmd == 0x02 ? platformEvent(bmc.sel, bmc.ledger, request.data)
                                   : CC_INVALID_COMMAND;
    case NETFN_OEM:
        return oemRequest(bmc, request, out);
    default:
        return CC_INVALID_COMMAND;
    }
}

// Completion code and data as the request's fate has them.
static Bytes answerData(Bmc& bmc, Session& session, const Message& request, const Plan& plan) {
    if (!plan.execute && isSetParameter(request))
        uploadChunk(bmc, session, request, true);
    if (plan.answer)
        return *plan.answer;
    if (!plan.execute) // silence has no answer at all
        return plan.fault->kind == FaultKind::CODE
                   ? Bytes{static_cast<uint8_t>(plan.fault->argument)}
                   : Bytes();
    Bytes out;
    const uint8_t code = execute(bmc, session, request, out);
    if (code != CC_OK)
        out.clear();
    out.insert(out.begin(), code);
    return out;
}

static void disturb(Bmc& bmc, const Message& request, const Plan& plan) {
    if (!plan.fault && !plan.answer)
        return;
    const std::string what =
        plan.fault ? faultText(*plan.fault) : "scripted answer " + hexText(*plan.answer);
    trace(bmc.ledger, "fault: " + what);
    if (concernsSlot(request) && (plan.answer || !bmc.slot.queue.empty()))
        disturbSlot(bmc.slot, bmc.ledger, what);
}

static void countTraffic(Bmc& bmc, const Message& request, const Bytes& answer) {
    const int selector = isSetParameter(request) ? selectorOf(request) : -1;
    Traffic& traffic = bmc.traffic[{request.netFn, request.cmd, selector}];
    traffic.requests++;
    traffic.failed += answer.empty() || answer[0] != CC_OK ? 1 : 0;
    traffic.bytesIn += 2 + request.data.size();
    traffic.bytesOut += 2 + answer.size();
}

// Tells a virtual machine whether its driver wants an interrupt for each answer; it waits for its
// own slow timer otherwise. Bit 0 of the global enables (IPMI v2.0, 22.1).
static void switchInterrupt(bool wanted, Wire& wire) {
    const Bytes control = encodeControl({static_cast<uint8_t>(wanted ? 0x05 : 0x06)});
    wire.bytes.insert(wire.bytes.begin(), control.begin(), control.end());
}

Wire handleRequest(Bmc& bmc, Session& session, const Message& request) {
    if (session.generation != bmc.generation) { // the BMC has restarted under this client
        const uint64_t id = session.id;
        session = Session();
        session.id = id;
        session.generation = bmc.generation;
    }
    bmc.lastRequestMs = bmc.ledger.nowMs;
    const Plan plan = planRequest(bmc.faults, request);
    disturb(bmc, request, plan);
    Message answer = request;
    answer.netFn = request.netFn | 1;
    answer.data = answerData(bmc, session, request, plan);
    if (request.netFn == NETFN_APP && request.cmd == 0x01)
        session.strict = true;
    countTraffic(bmc, request, answer.data);
    trace(bmc.ledger, format("#%llu %02X/%02X ", static_cast<unsigned long long>(session.id),
                             request.netFn, request.cmd) +
                          hexText(request.data) + " -> " + hexText(answer.data));
    Wire wire = wireAnswer(bmc.faults, plan, answer);
    if (request.netFn == NETFN_APP && request.cmd == 0x2E && !wire.bytes.empty())
        switchInterrupt((bmc.identity.globalEnables & 0x01) != 0, wire);
    return wire;
}

void badFrame(Bmc& bmc, const std::string& why) {
    bmc.badFrames++;
    complain(bmc.ledger, "bad frame: " + why);
}

void restartBmc(Bmc& bmc) {
    bmc.generation++;
    bmc.startMs = bmc.ledger.nowMs;
    bmc.parameters = Parameters();
    bmc.slot.queue.clear();
    bmc.slot.phase = SlotPhase::IDLE;
    bmc.files.reservation = 0;
    bmc.watchdog.running = false;
    bmc.panel.restartClean = 0;
    for (auto& bay : bmc.panel.bays)
        bay.second.led = -1;
    trace(bmc.ledger, "BMC restarted");
}

} // namespace bmcsim
