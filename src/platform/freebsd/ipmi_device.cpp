// The ipmi(4) device node (sys/ipmi.h).
#include "platform/platform.h"

#include <sys/types.h>

#include <cstddef>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <unistd.h>

// Last, for its request codes are macros that bear the names of the constants above.
#include <sys/ipmi.h>

namespace platform {

static_assert(IPMICTL_SEND_COMMAND == 0x8028690D && IPMICTL_RECEIVE_MSG_TRUNC == 0xC030690B &&
                  IPMICTL_SET_GETS_EVENTS_CMD == 0x80046910 &&
                  IPMICTL_SET_MY_ADDRESS_CMD == 0x80046911,
              "request codes of the driver");

// The driver's structures and those of the seam are the same bytes.
static_assert(sizeof(ipmi_msg) == sizeof(::ipmi_msg) &&
              offsetof(ipmi_msg, netfn) == offsetof(::ipmi_msg, netfn) &&
              offsetof(ipmi_msg, cmd) == offsetof(::ipmi_msg, cmd) &&
              offsetof(ipmi_msg, data_len) == offsetof(::ipmi_msg, data_len) &&
              offsetof(ipmi_msg, data) == offsetof(::ipmi_msg, data));
static_assert(sizeof(ipmi_req) == sizeof(::ipmi_req) && sizeof(ipmi_req) == 40 &&
              offsetof(ipmi_req, addr) == offsetof(::ipmi_req, addr) &&
              offsetof(ipmi_req, addr_len) == offsetof(::ipmi_req, addr_len) &&
              offsetof(ipmi_req, msgid) == offsetof(::ipmi_req, msgid) &&
              offsetof(ipmi_req, msg) == offsetof(::ipmi_req, msg));
static_assert(sizeof(ipmi_recv) == sizeof(::ipmi_recv) && sizeof(ipmi_recv) == 48 &&
              offsetof(ipmi_recv, recv_type) == offsetof(::ipmi_recv, recv_type) &&
              offsetof(ipmi_recv, addr) == offsetof(::ipmi_recv, addr) &&
              offsetof(ipmi_recv, addr_len) == offsetof(::ipmi_recv, addr_len) &&
              offsetof(ipmi_recv, msgid) == offsetof(::ipmi_recv, msgid) &&
              offsetof(ipmi_recv, msg) == offsetof(::ipmi_recv, msg));
static_assert(sizeof(ipmi_addr) == sizeof(::ipmi_addr) && sizeof(ipmi_addr) == 40 &&
              offsetof(ipmi_addr, channel) == offsetof(::ipmi_addr, channel) &&
              offsetof(ipmi_addr, data) == offsetof(::ipmi_addr, data));
static_assert(sizeof(ipmi_system_interface_addr) == sizeof(::ipmi_system_interface_addr) &&
              sizeof(ipmi_system_interface_addr) == 8 &&
              offsetof(ipmi_system_interface_addr, channel) ==
                  offsetof(::ipmi_system_interface_addr, channel) &&
              offsetof(ipmi_system_interface_addr, lun) ==
                  offsetof(::ipmi_system_interface_addr, lun));

int ipmi_open(const char* path) {
    return open(path, O_RDWR | O_CLOEXEC);
}

void ipmi_close(int fd) {
    close(fd);
}

int ipmi_set_gets_events(int fd, int value) {
    return ioctl(fd, IPMICTL_SET_GETS_EVENTS_CMD, &value);
}

int ipmi_set_my_address(int fd, unsigned address) {
    return ioctl(fd, IPMICTL_SET_MY_ADDRESS_CMD, &address);
}

int ipmi_send_command(int fd, ipmi_req& request) {
    return ioctl(fd, IPMICTL_SEND_COMMAND, &request);
}

int ipmi_wait(int fd) {
    if (fd < 0 || fd >= FD_SETSIZE)
        return 0; // beyond what select can watch
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(fd, &readable);
    if (select(fd + 1, &readable, nullptr, nullptr, nullptr) < 0)
        return -1;
    return FD_ISSET(fd, &readable) ? 1 : 0;
}

int ipmi_receive_msg_trunc(int fd, ipmi_recv& message) {
    return ioctl(fd, IPMICTL_RECEIVE_MSG_TRUNC, &message);
}

} // namespace platform
