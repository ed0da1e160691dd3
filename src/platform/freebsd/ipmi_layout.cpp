// What platform.h says of ipmi(4), beside the kernel's own words (sys/ipmi.h).
#include "platform/platform.h"

#include <sys/types.h>

#include <cstddef>
#include <sys/ioctl.h>

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

} // namespace platform
