// I/O ports behind io(4).
//
// The kernel gives the privilege to the thread that opens /dev/io and to the threads that it
// starts afterwards, not to those that run already. So every thread opens the node once before its
// first port access; the descriptors stay open, for the privilege ends with the last of them.
#include "platform/platform.h"

#include <fcntl.h>

namespace platform {

static thread_local bool privileged = false;

int io_open() {
    if (!privileged && open("/dev/io", O_RDONLY | O_CLOEXEC) < 0)
        return -1;
    privileged = true;
    return 0;
}

// Without the privilege the instruction would be a bus error; a port where nothing is reads 0xFF.
std::uint8_t inb(std::uint16_t port) {
    if (io_open() != 0)
        return 0xFF;
    std::uint8_t value;
    __asm__ volatile("inb %w1, %b0" : "=a"(value) : "Nd"(port));
    return value;
}

void outb(std::uint8_t value, std::uint16_t port) {
    if (io_open() == 0)
        __asm__ volatile("outb %b0, %w1" : : "a"(value), "Nd"(port));
}

} // namespace platform
