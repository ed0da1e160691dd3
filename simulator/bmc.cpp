#include "bmc.h"

#include "records.h"

#include <algorithm>

namespace bmcsim {

namespace {

constexpr uint8_t NETFN_APP = 0x06;
constexpr uint8_t NETFN_STORAGE = 0x0A;
constexpr uint8_t CMD_DEVICE_ID = 0x01;
constexpr uint8_t CMD_SET_ENABLES = 0x2E;
constexpr uint8_t CMD_SET_PARAMETER = 0x58;
constexpr uint8_t CMD_GET_PARAMETER = 0x59;

bool isApp(const Message& request, uint8_t cmd) {
    return request.netFn == NETFN_APP && request.cmd == cmd;
}

bool concernsSlot(const Message& request) {
    const Bytes& data = request.data;
    return (isApp(request, CMD_SET_PARAMETER) && !data.empty() && isIndexed(data[0])) ||
           (isApp(request, CMD_GET_PARAMETER) && data.size() > 1 && data[1] == SELECTOR_COMMAND);
}

Bytes uploadChunk(Bmc& bmc, Session& session, const Bytes& data, bool refused) {
    const ChunkResult result = setParameter(bmc.parameters, session, bmc.ledger, data, refused);
    if (result.value) {
        const Value& value = *result.value;
        Traffic& traffic = bmc.traffic[{NETFN_APP, CMD_SET_PARAMETER, value.selector}];
        traffic.values++;
        traffic.needed += std::max<size_t>(1, (value.text.size() + CHUNK_BYTES - 1) / CHUNK_BYTES);
        if (isIndexed(value.selector))
            slotAnswer(bmc.slot, session.id, bmc.ledger, value);
    }
    return {result.code};
}

// What drivers ask for (IPMI v2.0, chapters 20 and 22), and the parameters.
Bytes appRequest(Bmc& bmc, Session& session, const Message& request) {
    switch (request.cmd) {
    case CMD_DEVICE_ID: // 20.1: revision 1, firmware 3.21, IPMI 2.0, event log device
        return {CC_OK, 0x20, 0x01, 0x03, 0x21, 0x02, 0x04, 0, 0, 0, 0x01, 0, 0, 0, 0, 0};
    case 0x08: // Get Device GUID
        return {CC_OK, 0xB0, 0xB1, 0xB2, 0xB3, 0xB4, 0xB5, 0xB6, 0xB7,
                0xB8,  0xB9, 0xBA, 0xBB, 0xBC, 0xBD, 0xBE, 0xBF};
    case CMD_SET_ENABLES:
        if (request.data.size() != 1)
            return {CC_LENGTH_INVALID};
        bmc.globalEnables = request.data[0];
        return {CC_OK};
    case 0x2F: // Get BMC Global Enables
        return {CC_OK, bmc.globalEnables};
    case 0x30: // Clear Message Flags
        return {CC_OK};
    case 0x31: // Get Message Flags: none
        return {CC_OK, 0x00};
    case 0x35: // Read Event Message Buffer: it is empty
        return {CC_PARAMETER_UNSUPPORTED};
    case CMD_SET_PARAMETER:
        return uploadChunk(bmc, session, request.data, false);
    case CMD_GET_PARAMETER:
        return fetchCommand(bmc.slot, session.id, bmc.ledger, request.data);
    default:
        return {CC_INVALID_COMMAND};
    }
}

Bytes execute(Bmc& bmc, Session& session, const Message& request) {
    const Bytes& data = request.data;
    switch (request.netFn << 8 | request.cmd) {
    case 0x0402: // Platform Event
        return platformEvent(bmc.sel, bmc.ledger, data);
    case 0x3070:
        return panelCommand(bmc.panel, bmc.ledger, data);
    case 0x30A0:
        return fileCommand(bmc.files, bmc.ledger, data);
    case 0x30B3:
    case 0x30B6:
        return watchdogCommand(bmc.watchdog, bmc.ledger, request.cmd, data);
    default:
        break;
    }
    if (request.netFn == NETFN_APP)
        return appRequest(bmc, session, request);
    return request.netFn == NETFN_STORAGE ? storageCommand(bmc.sel, bmc.ledger, request.cmd, data)
                                          : Bytes{CC_INVALID_COMMAND};
}

// Completion code and data as the request's fate has them.
Bytes answerOf(Bmc& bmc, Session& session, const Message& request, const Fault& fault) {
    switch (fault.kind) {
    case FaultKind::CODE:
    case FaultKind::ANSWER:
    case FaultKind::SILENT:
    case FaultKind::DROP:
        if (isApp(request, CMD_SET_PARAMETER))
            uploadChunk(bmc, session, request.data, true);
        return fault.answer;
    default:
        return execute(bmc, session, request);
    }
}

void disturb(Bmc& bmc, const Message& request, const Fault& fault) {
    trace(bmc.ledger, "fault: " + faultText(fault));
    if (concernsSlot(request) && (fault.kind == FaultKind::ANSWER || !bmc.slot.queue.empty()))
        disturbSlot(bmc.slot, bmc.ledger, faultText(fault));
}

void record(Bmc& bmc, const Session& session, const Message& request, const Bytes& answer) {
    const bool upload = isApp(request, CMD_SET_PARAMETER);
    const int selector = !upload ? -1 : request.data.empty() ? 0 : request.data[0];
    Traffic& traffic = bmc.traffic[{request.netFn, request.cmd, selector}];
    traffic.requests++;
    traffic.failed += answer.empty() || answer[0] != CC_OK ? 1 : 0;
    traffic.bytesIn += 2 + request.data.size();
    traffic.bytesOut += 2 + answer.size();
    trace(bmc.ledger, format("#%llu %02X/%02X ", static_cast<unsigned long long>(session.id),
                             request.netFn, request.cmd) +
                          hexText(request.data) + " -> " + hexText(answer));
}

Bytes carryOut(Bmc& bmc, Session& session, const Message& request,
               const std::optional<Fault>& fault) {
    if (session.generation != bmc.generation) // the BMC has restarted under this client
        session = {session.id, bmc.generation};
    bmc.lastRequestMs = bmc.ledger.nowMs;
    if (fault)
        disturb(bmc, request, *fault);
    Bytes answer = fault ? answerOf(bmc, session, request, *fault) : execute(bmc, session, request);
    session.strict = session.strict || isApp(request, CMD_DEVICE_ID);
    record(bmc, session, request, answer);
    if (fault && fault->kind == FaultKind::SHORT)
        answer.resize(std::min<size_t>(answer.size(), fault->argument));
    if (fault && fault->kind == FaultKind::LONG)
        answer.resize(std::max<size_t>(answer.size(), fault->argument), 0xEE);
    return answer;
}

} // namespace

Session newSession(Bmc& bmc) {
    return {++bmc.sessions, bmc.generation};
}

Bytes answerRequest(Bmc& bmc, Session& session, int64_t nowMs, uint8_t netFn, uint8_t cmd,
                    const Bytes& data) {
    const Message request = {0, netFn, 0, cmd, data};
    bmc.ledger.nowMs = nowMs;
    return carryOut(bmc, session, request, meetFault(bmc.faults, request));
}

Wire serveRequest(Bmc& bmc, Session& session, const Message& request) {
    const auto fault = meetFault(bmc.faults, request);
    Message answer = request;
    answer.netFn |= 1;
    answer.data = carryOut(bmc, session, request, fault);
    Wire wire = wireAnswer(bmc.faults, fault, answer);
    // Tells a virtual machine whether its driver wants an interrupt for each answer; it waits for
    // its own slow timer otherwise. Bit 0 of the global enables (IPMI v2.0, 22.1).
    if (isApp(request, CMD_SET_ENABLES) && !wire.bytes.empty()) {
        const Bytes control =
            encodeControl({static_cast<uint8_t>((bmc.globalEnables & 0x01) != 0 ? 0x05 : 0x06)});
        wire.bytes.insert(wire.bytes.begin(), control.begin(), control.end());
    }
    return wire;
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
