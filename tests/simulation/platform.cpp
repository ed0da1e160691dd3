// The agent's kernel: what the stage's world has, unless a fault stands before it.
#include "platform/platform.h"
#include "stage.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <deque>

using bmcsim::FaultKind;
using sim::stage;

namespace platform {

namespace {

int failed(int error) {
    errno = error;
    return -1;
}

// The end of a call that a fault may hit.
int unless(const char* what, int error, int number = -1) {
    return sim::faultOf(what, number) == nullptr ? 0 : failed(error);
}

constexpr int BMC_FD = 1000, NVME_FD = 2000;
const bmcsim::Bytes TIMED_OUT = {0xC3};

struct Waiting {
    ipmi_recv message;
    bmcsim::Bytes data;
};
std::deque<Waiting> waiting; // for the agent to take, late answers before their time

// The fault that a request meets, if any. The BMC meets it too.
std::optional<FaultKind> meetFault(const bmcsim::Message& request) {
    ++stage.requests;
    bmcsim::Faults& faults = stage.bmc.faults;
    faults.orders.clear();
    for (const sim::Fault& fault : stage.faults)
        if (fault.side == sim::Fault::request && stage.requests > fault.first &&
            stage.requests <= fault.first + fault.count)
            faults.orders.push_back(fault.order);
    const auto met = bmcsim::meetFault(faults, request);
    if (met)
        sim::note("  request meets " + faultText(*met));
    return met ? std::optional(met->kind) : std::nullopt;
}

// Whether the BMC is away now, and what the agent has told it with an event.
void look(const bmcsim::Message& request, const bmcsim::Bytes& given) {
    stage.away = given.empty() || given == TIMED_OUT;
    if (stage.away) { // the agent gives up in the middle: not the fault of its values
        for (auto& value : stage.session.pending)
            value.second.damaged = true;
        for (auto& list : stage.session.lists)
            list.second.damaged = true;
    }
    if (request.netFn == 4 && request.cmd == 2) {
        const bool taken = !given.empty() && given[0] == 0;
        stage.events.emplace_back(request.data, taken);
        sim::note("  event " + bmcsim::hexText(request.data) + (taken ? "" : ", not taken"));
    }
}

} // namespace

int ipmi_open(const char* path) {
    return std::strcmp(path, "/dev/ipmi0") == 0 ? BMC_FD : failed(ENOENT);
}
void ipmi_close(int /*fd*/) {}
int ipmi_set_gets_events(int /*fd*/, int /*value*/) {
    return 0;
}
int ipmi_set_my_address(int /*fd*/, unsigned /*address*/) {
    return 0;
}

int ipmi_send_command(int /*fd*/, ipmi_req& request) {
    if (stage.away)
        stage.flaws.emplace_back("a request to a BMC that is away");
    const ipmi_msg& sent = request.msg;
    const bmcsim::Message message{
        0, sent.netfn, 0, sent.cmd, {sent.data, sent.data + sent.data_len}};
    const std::optional<FaultKind> fault = meetFault(message);
    if (fault == FaultKind::DROP) {
        look(message, {});
        return failed(EIO);
    }
    const bmcsim::Bytes given = answerRequest(stage.bmc, stage.session, stage.bmc.ledger.nowMs + 1,
                                              message.netFn, message.cmd, message.data);
    const ipmi_recv answer{0, nullptr, 0, request.msgid, sent};
    const bool timed_out = fault == FaultKind::LATE || fault == FaultKind::SILENT;
    if (timed_out)
        waiting.push_back({answer, TIMED_OUT});
    if (fault != FaultKind::SILENT)
        waiting.push_back({answer, given});
    look(message, timed_out ? TIMED_OUT : given);
    return 0;
}

int ipmi_wait(int /*fd*/, int /*timeout_ms*/) {
    return waiting.empty() ? 0 : 1;
}

int ipmi_receive_msg_trunc(int /*fd*/, ipmi_recv& received) {
    if (waiting.empty())
        return failed(EAGAIN);
    const Waiting next = std::move(waiting.front());
    waiting.pop_front();
    const std::size_t stored = std::min<std::size_t>(next.data.size(), received.msg.data_len);
    std::copy_n(next.data.begin(), stored, received.msg.data);
    received.msgid = next.message.msgid;
    received.msg.netfn = next.message.msg.netfn | 1;
    received.msg.cmd = next.message.msg.cmd;
    received.msg.data_len = static_cast<std::uint16_t>(stored);
    return stored == next.data.size() ? 0 : failed(EMSGSIZE);
}

int io_open() { // the driver is the only road
    return failed(EPERM);
}
std::uint8_t inb(std::uint16_t /*port*/) {
    return 0xFF;
}
void outb(std::uint8_t /*value*/, std::uint16_t /*port*/) {}

int nvme_open(const char* path) {
    for (const sim::Nvme& nvme : stage.world.nvmes)
        if (nvme.there && sim::say("/dev/nvme{}", nvme.number) == path) {
            if (unless("nvme open", EMFILE, nvme.number) != 0)
                return -1;
            ++stage.open_drives;
            return NVME_FD + nvme.number;
        }
    stage.flaws.push_back(std::string("opened as a controller: ") + path);
    return failed(ENXIO);
}
void nvme_close(int /*fd*/) {
    --stage.open_drives;
}

int nvme_passthrough(int fd, nvme_pt_command& command) {
    const int number = fd - NVME_FD;
    const sim::Nvme& nvme =
        *std::find_if(stage.world.nvmes.begin(), stage.world.nvmes.end(),
                      [&](const sim::Nvme& each) { return each.number == number; });
    std::vector<std::uint8_t> page(command.len);
    const std::uint32_t what = bmcsim::littleEndian({&command.cmd[40], &command.cmd[44]}, 0, 4);
    const auto asks = [&](int opcode, std::uint32_t about, std::size_t length) {
        return command.cmd[0] == opcode && what == about && command.len == length;
    };
    if (asks(0x02, 0x007F0002, 512)) {
        std::copy(nvme.health.begin(), nvme.health.end(), page.begin());
    } else if (asks(0x06, 1, 4096)) {
        std::fill_n(page.begin() + 4, 60, ' ');
        std::copy(nvme.serial.begin(), nvme.serial.end(), page.begin() + 5);
        std::copy_n(sim::NVME_MODEL, std::strlen(sim::NVME_MODEL), page.begin() + 24);
    } else if (asks(0x06, 0, 4096) && command.cmd[4] == 1) {
        std::memcpy(page.data(), &nvme.blocks, 8);
        page[26] = 3; // the format in use
        page[128 + 3 * 4 + 2] = nvme.block_bits;
    } else {
        stage.flaws.emplace_back("an NVMe command that nothing is known of");
    }
    if (reinterpret_cast<std::uintptr_t>(command.buf) % 8 != 0)
        stage.flaws.emplace_back("a buffer of an NVMe command is not aligned");
    if (sim::faultOf("nvme status", number) != nullptr)
        command.cpl[14] = 0x04;
    else
        std::memcpy(command.buf, page.data(), page.size());
    return unless("nvme call", EIO, number);
}

int cp_time(std::array<std::int64_t, 5>& ticks) {
    const int result = unless("ticks", EIO);
    ticks = result == 0 ? stage.world.ticks : ticks; // kept for the next share
    return result;
}

int memory(memory_amounts& amounts) {
    amounts = {stage.world.physical, stage.world.inactive, stage.world.free};
    return unless("memory", EIO);
}

int host_name(std::string& name) {
    name = stage.world.host;
    return unless("host name", EIO);
}

int interface_count(int& count) {
    count = 0;
    for (const sim::Nic& nic : stage.world.nics)
        count = std::max(count, nic.row);
    return unless("row count", ENOMEM);
}

int interface_data(int row, ifmibdata& data) {
    const auto nic = std::find_if(stage.world.nics.begin(), stage.world.nics.end(),
                                  [&](const sim::Nic& each) { return each.row == row; });
    if (nic == stage.world.nics.end() || unless("row gone", ENOENT, row) != 0)
        return failed(ENOENT);
    data = {};
    nic->name.copy(data.ifmd_name, sizeof data.ifmd_name - 1);
    data.ifmd_flags = (nic->up ? INTERFACE_UP : 0) | (nic->loopback ? INTERFACE_LOOPBACK : 0);
    data.ifi_ibytes = nic->counters[0];
    data.ifi_ierrors = nic->counters[1];
    data.ifi_obytes = nic->counters[2];
    data.ifi_oerrors = nic->counters[3];
    return unless("row error", EIO, row);
}

int interface_addresses(std::vector<interface_address>& addresses) {
    addresses.clear();
    for (const sim::Nic& nic : stage.world.nics) {
        interface_address link{nic.name, address_family::link};
        link.has_mac = true;
        for (std::size_t i = 0; i < 6; i++)
            link.mac.at(i) =
                static_cast<std::uint8_t>(std::stoi(nic.mac.substr(i * 3, 2), nullptr, 16));
        addresses.push_back(link);
        for (const auto& [text, prefix] : nic.ip4) {
            interface_address one{nic.name, address_family::inet};
            one.address_length = sizeof(sockaddr_in);
            auto* address = reinterpret_cast<sockaddr_in*>(&one.address);
            auto* mask = reinterpret_cast<sockaddr_in*>(&one.netmask);
            address->sin_family = mask->sin_family = AF_INET;
            inet_pton(AF_INET, text.c_str(), &address->sin_addr);
            mask->sin_addr.s_addr = htonl(~0U << (32 - prefix));
            addresses.push_back(one);
        }
    }
    return unless("addresses", ENOMEM);
}

} // namespace platform
