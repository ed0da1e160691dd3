// The admin passthrough of nvme(4).
//
// dev/nvme/nvme.h declares the members of the request with other types from one release to the
// next (bit-fields or integers in the entries, the type of the last member), never with other
// bytes. So the request is declared here as the bytes that the driver has taken since FreeBSD 9.
#include "platform/platform.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace platform {

namespace {

struct passthrough_request {
    std::array<std::uint8_t, 64> cmd;
    std::array<std::uint8_t, 16> cpl;
    void* buf;
    std::uint32_t len;
    std::uint32_t is_read;
    void* driver_lock; // the kernel's own
};

constexpr unsigned long NVME_PASSTHROUGH_CMD = _IOWR('n', 0, passthrough_request);

static_assert(sizeof(passthrough_request) == 104 && NVME_PASSTHROUGH_CMD == 0xC0686E00);
static_assert(offsetof(passthrough_request, cpl) == 64 &&
              offsetof(passthrough_request, buf) == 80 &&
              offsetof(passthrough_request, len) == 88 &&
              offsetof(passthrough_request, is_read) == 92 &&
              offsetof(passthrough_request, driver_lock) == 96);

} // namespace

int nvme_open(const char* path) {
    return open(path, O_RDWR | O_CLOEXEC);
}

void nvme_close(int fd) {
    close(fd);
}

int nvme_passthrough(int fd, nvme_pt_command& command) {
    passthrough_request request{command.cmd,     {},     command.buf, command.len,
                                command.is_read, nullptr};
    const int result = ioctl(fd, NVME_PASSTHROUGH_CMD, &request);
    command.cpl = request.cpl;
    return result;
}

} // namespace platform
