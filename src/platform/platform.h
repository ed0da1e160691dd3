// The only door to what differs between kernels. One implementation is chosen at link time:
// platform/freebsd (the product), platform/linux, platform/simulated. Every function is one
// system call or as near to one as the kernel allows, and holds no policy.
//
// Unless said otherwise a function returns 0 on success and -1 with errno set on failure, may be
// called from any thread, and does not block.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <vector>

namespace platform {

// ---- IPMI device node ------------------------------------------------------------------------
// The structures are those of the OpenIPMI-style ioctls of ipmi(4); the kernels take them as they
// stand here.

struct ipmi_msg {
    std::uint8_t netfn;
    std::uint8_t cmd;
    std::uint16_t data_len;
    std::uint8_t* data;
};

struct ipmi_req {
    std::uint8_t* addr;
    unsigned addr_len;
    long msgid;
    ipmi_msg msg;
};

struct ipmi_recv {
    int recv_type;
    std::uint8_t* addr;
    unsigned addr_len;
    long msgid;
    ipmi_msg msg;
};

struct ipmi_addr {
    int addr_type;
    short channel;
    std::uint8_t data[32];
};

struct ipmi_system_interface_addr {
    int addr_type;
    short channel;
    std::uint8_t lun;
};

constexpr unsigned long IPMICTL_SEND_COMMAND = 0x8028690D;
constexpr unsigned long IPMICTL_RECEIVE_MSG_TRUNC = 0xC030690B;
constexpr unsigned long IPMICTL_SET_GETS_EVENTS_CMD = 0x80046910;
constexpr unsigned long IPMICTL_SET_MY_ADDRESS_CMD = 0x80046911;

static_assert(sizeof(void*) != 8 || sizeof(ipmi_req) == 40, "IPMICTL_SEND_COMMAND takes 40 bytes");
static_assert(sizeof(void*) != 8 || sizeof(ipmi_recv) == 48,
              "IPMICTL_RECEIVE_MSG_TRUNC takes 48 bytes");
static_assert(sizeof(ipmi_addr) == 40 && sizeof(ipmi_system_interface_addr) == 8,
              "address sizes of the driver");

// Opens a device node read-write, closed on exec. Returns the descriptor or -1.
int ipmi_open(const char* path);
void ipmi_close(int fd);
int ipmi_set_gets_events(int fd, int value);
int ipmi_set_my_address(int fd, unsigned address);
// Hands the request to the driver, which copies it.
int ipmi_send_command(int fd, ipmi_req& request);
// Blocks until a message waits, `timeout_ms` milliseconds at most. Returns 1 when one does, 0 when
// none has come, -1 with errno (EINTR when a signal came first; the message stays where it is).
int ipmi_wait(int fd, int timeout_ms);
// Takes one message. -1 with EMSGSIZE: the message was longer than the buffer; what fits is there
// and msg.data_len is the stored length.
int ipmi_receive_msg_trunc(int fd, ipmi_recv& message);

// ---- I/O ports -------------------------------------------------------------------------------

// Gains I/O-port privilege for the process; the privilege stays until the process ends.
int io_open();
// Valid only after io_open.
std::uint8_t inb(std::uint16_t port);
void outb(std::uint8_t value, std::uint16_t port);

// ---- NVMe passthrough ------------------------------------------------------------------------
// Entries are byte arrays read and written at the offsets that NVMe 1.4 gives (4.2 submission
// queue entry, 4.6 completion queue entry), little-endian.

struct nvme_pt_command {
    std::array<std::uint8_t, 64> cmd{}; // submission entry
    std::array<std::uint8_t, 16> cpl{}; // completion entry, filled by the driver
    void* buf = nullptr;                // data buffer of `len` bytes
    std::uint32_t len = 0;
    std::uint32_t is_read = 0; // 1: data flows from the device
};

// Opens a controller node read-write, closed on exec. Returns the descriptor or -1.
int nvme_open(const char* path);
void nvme_close(int fd);
// Sends one admin command and blocks until it completes. A completion that carries an error
// status is a success of the call: look at cpl.
int nvme_passthrough(int fd, nvme_pt_command& command);

// ---- CPU, memory, interfaces, addresses ------------------------------------------------------

// Ticks since boot: user, nice, system, interrupt, idle.
int cp_time(std::array<std::int64_t, 5>& ticks);

// Physical memory, and what of it is inactive and free, in bytes.
struct memory_amounts {
    std::uint64_t physical = 0;
    std::uint64_t inactive = 0;
    std::uint64_t free = 0;
};
int memory(memory_amounts& amounts);

// The kernel's host name.
int host_name(std::string& name);

// Values of ifmd_flags, the same on every kernel here.
constexpr unsigned INTERFACE_UP = 0x1;
constexpr unsigned INTERFACE_LOOPBACK = 0x8;

struct ifmibdata {
    char ifmd_name[16];
    unsigned ifmd_flags;
    std::uint64_t ifi_ibytes;
    std::uint64_t ifi_ierrors;
    std::uint64_t ifi_obytes;
    std::uint64_t ifi_oerrors;
};

// The highest row number of the interface table.
int interface_count(int& count);
// Row 1 to interface_count.
int interface_data(int row, ifmibdata& data);

enum class address_family { inet, inet6, link, other };

struct interface_address {
    std::string name;
    address_family family = address_family::other;
    // inet and inet6 only; address_length is 16 for inet. A missing netmask has family 0.
    sockaddr_storage address{};
    socklen_t address_length = 0;
    sockaddr_storage netmask{};
    // link only: the six bytes of the link-level address; false when it has another length.
    bool has_mac = false;
    std::array<std::uint8_t, 6> mac{};
};

// Every address of every interface, in the kernel's order. `addresses` is emptied first.
int interface_addresses(std::vector<interface_address>& addresses);

} // namespace platform
