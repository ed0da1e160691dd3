// The IPMI device node, for both kernels: ipmi(4) and the OpenIPMI device take the same ioctls.
#include "platform/failed.h"
#include "platform/platform.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace platform {

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

int ipmi_wait(int fd, int timeout_ms) {
    pollfd device{fd, POLLIN, 0};
    const int ready = poll(&device, 1, timeout_ms);
    return ready == 1 && (device.revents & POLLIN) == 0 ? failed(EIO) : ready;
}

int ipmi_receive_msg_trunc(int fd, ipmi_recv& message) {
    return ioctl(fd, IPMICTL_RECEIVE_MSG_TRUNC, &message) == -1 ? -1 : 0;
}

} // namespace platform
