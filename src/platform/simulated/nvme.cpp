// NVMe controllers of a recorded host. HOST/dev/NAME is the device node of the folder HOST/NAME,
// which holds controller.bin, namespace1.bin and health.bin; a page shorter than the transfer
// leaves the rest of the buffer as it was. Beside PAGE.bin, a file PAGE.status gives the completion
// a status (status code type * 256 + status code, C notation), a file PAGE.fail fails the call
// with the error number in it (EIO when it is empty).
//
// Only the commands that the agent has to send are answered; any other is named on standard error
// and completes with "invalid opcode" or "invalid field in command" (NVMe 1.4, 4.6.1.2.1).
#include "platform/platform.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace platform {

namespace {

struct page_command {
    const char* page;
    unsigned opcode, nsid, cdw10, length;
};

constexpr page_command PAGES[] = {
    {"controller", 0x06, 0, 1, 4096},
    {"namespace1", 0x06, 1, 0, 4096},
    {"health", 0x02, 0xFFFFFFFF, 0x007F0002, 512},
};

constexpr unsigned INVALID_OPCODE = 0x01;
constexpr unsigned INVALID_FIELD = 0x02;

unsigned dword(const nvme_pt_command& command, std::size_t offset) {
    unsigned value = 0;
    for (std::size_t i = 4; i-- > 0;)
        value = value << 8 | command.cmd[offset + i];
    return value;
}

void complete(nvme_pt_command& command, unsigned status) {
    command.cpl.fill(0);
    command.cpl[14] = static_cast<std::uint8_t>(status << 1);
    command.cpl[15] = static_cast<std::uint8_t>(status << 1 >> 8);
}

// Every dword of the submission entry but these three has to be zero.
const page_command* find(const nvme_pt_command& command) {
    nvme_pt_command rest = command;
    for (std::size_t used : {0U, 4U, 40U})
        std::memset(&rest.cmd[used], 0, 4);
    const bool clean = rest.cmd == nvme_pt_command{}.cmd && command.is_read == 1;
    for (const page_command& page : PAGES)
        if (clean && dword(command, 0) == page.opcode && dword(command, 4) == page.nsid &&
            dword(command, 40) == page.cdw10 && command.len == page.length)
            return &page;
    return nullptr;
}

int refuse(nvme_pt_command& command) {
    std::fprintf(
        stderr, "simulated nvme: wrong command: opc 0x%02x nsid 0x%x cdw10 0x%08x len %u read %u\n",
        dword(command, 0), dword(command, 4), dword(command, 40), command.len, command.is_read);
    const unsigned opcode = command.cmd[0];
    complete(command, opcode == 0x02 || opcode == 0x06 ? INVALID_FIELD : INVALID_OPCODE);
    return 0;
}

// Reads at most `size` bytes of a file in a folder. -1 with errno when there is no such file.
ssize_t readFile(int folder, const std::string& name, void* buffer, std::size_t size) {
    const int fd = openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return -1;
    const ssize_t length = read(fd, buffer, size);
    close(fd);
    return length;
}

// The number in a file; `fallback` when the file holds none, -1 without a file.
long fault(int folder, const std::string& name, long fallback) {
    char text[32] = {};
    if (readFile(folder, name, text, sizeof text - 1) < 0)
        return -1;
    char* end = nullptr;
    const long number = std::strtol(text, &end, 0);
    return end == text ? fallback : number;
}

} // namespace

int nvme_open(const char* path) {
    const char* host = std::getenv("VYN_SIM_HOST");
    const char* name = std::strrchr(path, '/');
    if (host == nullptr || name == nullptr ||
        access((host + ("/dev" + std::string(name))).c_str(), F_OK) != 0) {
        errno = ENOENT;
        return -1;
    }
    const int folder = open((host + std::string(name)).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        errno = ENXIO; // a node without a device behind it
    return folder;
}

void nvme_close(int fd) {
    close(fd);
}

int nvme_passthrough(int fd, nvme_pt_command& command) {
    const page_command* page = find(command);
    if (page == nullptr)
        return refuse(command);

    const std::string name = page->page;
    const long error = fault(fd, name + ".fail", EIO);
    if (error >= 0) {
        errno = static_cast<int>(error);
        return -1;
    }
    const long status = fault(fd, name + ".status", INVALID_FIELD);
    complete(command, status >= 0 ? static_cast<unsigned>(status) : 0);
    if (status > 0)
        return 0;
    return readFile(fd, name + ".bin", command.buf, command.len) < 0 ? -1 : 0;
}

} // namespace platform
