// The admin ioctl of the kernel's NVMe driver (linux/nvme_ioctl.h).
#include "platform/platform.h"

#include <cstring>
#include <fcntl.h>
#include <linux/nvme_ioctl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace platform {

static_assert(sizeof(nvme_admin_cmd) == 72, "NVME_IOCTL_ADMIN_CMD takes 72 bytes");

int nvme_open(const char* path) {
    return open(path, O_RDWR | O_CLOEXEC);
}

void nvme_close(int fd) {
    close(fd);
}

int nvme_passthrough(int fd, nvme_pt_command& command) {
    nvme_admin_cmd admin{};
    admin.opcode = command.cmd[0];
    admin.flags = command.cmd[1];
    // The dwords keep their places, but for the buffer's address and length.
    std::memcpy(&admin.nsid, &command.cmd[4], 4);
    std::memcpy(&admin.cdw10, &command.cmd[40], 24);
    admin.addr = reinterpret_cast<std::uintptr_t>(command.buf);
    admin.data_len = command.len;

    const int status = ioctl(fd, NVME_IOCTL_ADMIN_CMD, &admin);
    if (status < 0)
        return -1;
    // A positive result is the completion's status without the phase tag.
    const auto word = static_cast<std::uint16_t>(status << 1);
    command.cpl.fill(0);
    std::memcpy(&command.cpl[0], &admin.result, sizeof admin.result);
    std::memcpy(&command.cpl[14], &word, sizeof word);
    return 0;
}

} // namespace platform
