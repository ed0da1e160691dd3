// The I/O ports of the simulated platform: one KCS interface in front of the BMC behind the
// socket, at the pair that the transport names. Like QEMU's it answers for a BMC that doesn't.

#include "platform/platform.h"
#include "platform/simulated/bmc_link.h"
#include "platform/simulated/kcs_interface.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>

namespace {

using std::chrono::steady_clock;

constexpr std::uint8_t FLOATING = 0xFF;

// IPMI v2.0, 5.2
constexpr std::uint8_t TIMED_OUT = 0xC3;
constexpr std::uint8_t DISCONNECTED = 0xD2;

// Long enough to keep a polling host off the processor, short beside its one-second waits.
constexpr int POLL_MS = 1;

simulated::bmc_link link_to_bmc;
int sequence = -1;
simulated::kcs_message request;
steady_clock::time_point sent_at; // NOLINT(cert-err58-cpp): its constructor does not throw

void deliver(const simulated::kcs_message& message) {
    request = message;
    sent_at = steady_clock::now();
    sequence = -1;
    if (link_to_bmc.connect())
        sequence = link_to_bmc.send(message[0] >> 2, message[0] & 3, message[1], message.data() + 2,
                                    message.size() - 2);
}

simulated::kcs_message response(simulated::kcs_message data) {
    data.insert(data.begin(), {static_cast<std::uint8_t>(request[0] | 4), request[1]});
    return data;
}

std::optional<simulated::kcs_message> collect() {
    using link_result = simulated::bmc_link::result;
    if (sequence < 0)
        return response({DISCONNECTED});
    simulated::bmc_answer answer;
    switch (link_to_bmc.receive(answer, POLL_MS)) {
    case link_result::answered:
        if (answer.sequence == sequence && answer.netfn == (request[0] >> 2 | 1) &&
            answer.cmd == request[1])
            return response(answer.data);
        return std::nullopt;
    case link_result::disconnected:
        return response({DISCONNECTED});
    default:
        break;
    }
    if (steady_clock::now() - sent_at >= std::chrono::milliseconds(simulated::timeoutMs()))
        return response({TIMED_OUT});
    return std::nullopt;
}

enum class port { none, data, status };

// Which register the port is with the transport chosen, if a BMC is there.
port find_port(std::uint16_t number) {
    const std::string transport = simulated::transport();
    const bool first = transport == "kcs";
    if ((!first && transport != "kcs2") || !simulated::kcs_behind_ports().present())
        return port::none;
    if (number == (first ? 0xCA2 : 0xCA8))
        return port::data;
    return number == (first ? 0xCA3 : 0xCAC) ? port::status : port::none;
}

} // namespace

namespace simulated {

kcs_interface& kcs_behind_ports() {
    static kcs_interface kcs = [] {
        kcs_interface attached;
        attached.present = [] { return link_to_bmc.connect(); };
        attached.deliver = deliver;
        attached.collect = collect;
        const char* fault = std::getenv("VYN_SIM_KCS_FAULT");
        attached.faults = kcs_fault_named(fault == nullptr ? "" : fault);
        return attached;
    }();
    return kcs;
}

} // namespace simulated

namespace platform {

int io_open() {
    if (simulated::transport() != "none")
        return 0;
    errno = EPERM;
    return -1;
}

std::uint8_t inb(std::uint16_t number) {
    switch (find_port(number)) {
    case port::data:
        return simulated::kcs_read_data(simulated::kcs_behind_ports());
    case port::status:
        return simulated::kcs_read_status(simulated::kcs_behind_ports());
    default:
        return FLOATING;
    }
}

void outb(std::uint8_t value, std::uint16_t number) {
    switch (find_port(number)) {
    case port::data:
        simulated::kcs_write_data(simulated::kcs_behind_ports(), value);
        break;
    case port::status:
        simulated::kcs_write_command(simulated::kcs_behind_ports(), value);
        break;
    default:
        break;
    }
}

} // namespace platform
