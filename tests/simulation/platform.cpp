// The agent's kernel: what the stage's world has, unless a fault stands before it.
#include "platform/platform.h"
#include "stage.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <deque>

using sim::stage;
using sim::Trouble;

namespace platform {

namespace {

int failed(int error) {
    errno = error;
    return -1;
}

bool hit(Trouble what, int number = -1) {
    return sim::faultOf(what, number) != nullptr;
}

// ---- The driver of the BMC

constexpr int BMC_FD = 1000, NVME_FD = 2000;
constexpr std::uint8_t TIMED_OUT = 0xC3;

struct Message {
    long msgid;
    std::uint8_t netfn, cmd;
    bmcsim::Bytes data;
};
std::deque<Message> waiting; // for the agent to take, late answers before their time

const sim::Fault* requestFault(int command) {
    for (const sim::Fault& fault : stage.faults)
        if (fault.what >= Trouble::bmc_code && (fault.command == -1 || fault.command == command) &&
            stage.requests > fault.first && stage.requests <= fault.first + fault.count)
            return &fault;
    return nullptr;
}

// The agent gives up in the middle of what it told: not the fault of its values.
void breakSession() {
    for (auto& value : stage.session.pending)
        value.second.damaged = true;
    for (auto& list : stage.session.lists)
        list.second.damaged = true;
}

// The BMC's own answer, with a fault that it knows of.
bmcsim::Bytes answerOf(const ipmi_msg& request, const sim::Fault* fault) {
    using bmcsim::FaultKind;
    stage.bmc.faults.orders.clear();
    if (fault != nullptr && fault->what != Trouble::bmc_late) {
        const FaultKind kind = fault->what == Trouble::bmc_code     ? FaultKind::CODE
                               : fault->what == Trouble::bmc_silent ? FaultKind::SILENT
                               : fault->what == Trouble::bmc_short  ? FaultKind::SHORT
                                                                    : FaultKind::LONG;
        const auto number = static_cast<std::uint32_t>(fault->number);
        bmcsim::Bytes code;
        if (kind == FaultKind::CODE)
            code = {static_cast<std::uint8_t>(number)};
        stage.bmc.faults.orders.push_back({{}, kind, code, number, 1});
    }
    return answerRequest(stage.bmc, stage.session, stage.bmc.ledger.nowMs + 1, request.netfn,
                         request.cmd, {request.data, request.data + request.data_len});
}

void look(const ipmi_msg& request, const bmcsim::Bytes& given) {
    stage.away = given.empty() || given[0] == TIMED_OUT;
    if (stage.away)
        breakSession();
    if (request.netfn == 4 && request.cmd == 2) {
        const bmcsim::Bytes event(request.data, request.data + request.data_len);
        stage.events.push_back({event, !given.empty() && given[0] == 0});
        sim::note("  event " + bmcsim::hexText(event) +
                  (stage.events.back().taken ? "" : ", not taken"));
    }
}

} // namespace

int ipmi_open(const char* path) {
    return std::strcmp(path, "/dev/ipmi0") == 0 ? BMC_FD : failed(ENOENT);
}
void ipmi_close(int) {}
int ipmi_set_gets_events(int, int) {
    return 0;
}
int ipmi_set_my_address(int, unsigned) {
    return 0;
}

int ipmi_send_command(int, ipmi_req& request) {
    if (stage.away)
        stage.flaws.push_back("a request to a BMC that is away");
    ++stage.requests;
    const ipmi_msg& message = request.msg;
    const sim::Fault* fault = requestFault(message.netfn << 8 | message.cmd);
    if (fault != nullptr)
        sim::note(sim::format("  request %02X/%02X: ", message.netfn, message.cmd) +
                  sim::TROUBLE_NAMES[static_cast<int>(fault->what)]);
    if (fault != nullptr && fault->what == Trouble::bmc_gone) {
        look(message, {});
        return failed(EIO);
    }
    bmcsim::Bytes given = answerOf(message, fault);
    if (fault != nullptr &&
        (fault->what == Trouble::bmc_late || fault->what == Trouble::bmc_silent)) {
        waiting.push_back({request.msgid, message.netfn, message.cmd, {TIMED_OUT}});
        if (fault->what == Trouble::bmc_late)
            waiting.push_back({request.msgid, message.netfn, message.cmd, given});
        given = {TIMED_OUT};
    } else {
        waiting.push_back({request.msgid, message.netfn, message.cmd, given});
    }
    look(message, given);
    return 0;
}

int ipmi_wait(int, int) {
    return waiting.empty() ? 0 : 1;
}

int ipmi_receive_msg_trunc(int, ipmi_recv& received) {
    if (waiting.empty())
        return failed(EAGAIN);
    const Message next = std::move(waiting.front());
    waiting.pop_front();
    const std::size_t stored = std::min<std::size_t>(next.data.size(), received.msg.data_len);
    std::copy_n(next.data.begin(), stored, received.msg.data);
    received.msgid = next.msgid;
    received.msg.netfn = next.netfn | 1;
    received.msg.cmd = next.cmd;
    received.msg.data_len = static_cast<std::uint16_t>(stored);
    return stored == next.data.size() ? 0 : failed(EMSGSIZE);
}

int io_open() { // the driver is the only road
    return failed(EPERM);
}
std::uint8_t inb(std::uint16_t) {
    return 0xFF;
}
void outb(std::uint8_t, std::uint16_t) {}

// ---- NVMe drives

int nvme_open(const char* path) {
    for (const sim::Nvme& nvme : stage.world.nvmes)
        if (nvme.there && sim::format("/dev/nvme%d", nvme.number) == path) {
            if (hit(Trouble::nvme_open, nvme.number))
                return failed(EMFILE);
            ++stage.open_drives;
            return NVME_FD + nvme.number;
        }
    stage.flaws.push_back(std::string("opened as a controller: ") + path);
    return failed(ENXIO);
}
void nvme_close(int) {
    --stage.open_drives;
}

int nvme_passthrough(int fd, nvme_pt_command& command) {
    const int number = fd - NVME_FD;
    if (hit(Trouble::nvme_call, number))
        return failed(EIO);
    const auto nvme = std::find_if(stage.world.nvmes.begin(), stage.world.nvmes.end(),
                                   [&](const sim::Nvme& each) { return each.number == number; });
    std::vector<std::uint8_t> page(command.len);
    const std::uint32_t what = bmcsim::littleEndian({&command.cmd[40], &command.cmd[44]}, 0, 4);
    const bool fits = reinterpret_cast<std::uintptr_t>(command.buf) % 8 == 0;
    if (command.cmd[0] == 0x02 && what == 0x007F0002 && command.len == 512) {
        std::copy(nvme->health.begin(), nvme->health.end(), page.begin());
    } else if (command.cmd[0] == 0x06 && what == 1 && command.len == 4096) {
        std::fill_n(page.begin() + 4, 60, ' ');
        std::copy(nvme->serial.begin(), nvme->serial.end(), page.begin() + 5);
        std::copy(nvme->model.begin(), nvme->model.end(), page.begin() + 24);
    } else if (command.cmd[0] == 0x06 && what == 0 && command.cmd[4] == 1 && command.len == 4096) {
        std::memcpy(page.data(), &nvme->blocks, 8);
        page[26] = 3; // the format in use
        page[128 + 3 * 4 + 2] = nvme->block_bits;
    } else {
        stage.flaws.push_back("an NVMe command that nothing is known of");
    }
    if (!fits)
        stage.flaws.push_back("a buffer of an NVMe command is not aligned");
    if (hit(Trouble::nvme_status, number))
        command.cpl[14] = 0x04;
    else
        std::memcpy(command.buf, page.data(), page.size());
    return 0;
}

// ---- CPU, memory, interfaces

int cp_time(std::array<std::int64_t, 5>& ticks) {
    if (hit(Trouble::ticks))
        return failed(EIO);
    ticks = stage.world.ticks;
    return 0;
}

int memory(memory_amounts& amounts) {
    if (hit(Trouble::memory))
        return failed(EIO);
    amounts = {stage.world.physical, stage.world.inactive, stage.world.free};
    return 0;
}

int host_name(std::string& name) {
    if (hit(Trouble::host_name))
        return failed(EIO);
    name = stage.world.host;
    return 0;
}

int interface_count(int& count) {
    if (hit(Trouble::row_count))
        return failed(ENOMEM);
    count = 0;
    for (const sim::Nic& nic : stage.world.nics)
        count = std::max(count, nic.row);
    return 0;
}

int interface_data(int row, ifmibdata& data) {
    const auto nic = std::find_if(stage.world.nics.begin(), stage.world.nics.end(),
                                  [&](const sim::Nic& each) { return each.row == row; });
    if (nic == stage.world.nics.end() || hit(Trouble::row_gone, row))
        return failed(ENOENT);
    if (hit(Trouble::row_error, row))
        return failed(EIO);
    data = {};
    nic->name.copy(data.ifmd_name, sizeof data.ifmd_name - 1);
    data.ifmd_flags = (nic->up ? INTERFACE_UP : 0) | (nic->loopback ? INTERFACE_LOOPBACK : 0);
    data.ifi_ibytes = nic->counters[0];
    data.ifi_ierrors = nic->counters[1];
    data.ifi_obytes = nic->counters[2];
    data.ifi_oerrors = nic->counters[3];
    return 0;
}

int interface_addresses(std::vector<interface_address>& addresses) {
    addresses.clear();
    if (hit(Trouble::addresses))
        return failed(ENOMEM);
    for (const sim::Nic& nic : stage.world.nics) {
        interface_address link{nic.name, address_family::link};
        link.has_mac = !nic.mac.empty();
        for (std::size_t i = 0; i < 6 && link.has_mac; i++)
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
    return 0;
}

} // namespace platform
