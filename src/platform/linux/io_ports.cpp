#include "platform/platform.h"

#include <sys/io.h>

namespace platform {
namespace {

// The kernel grants the privilege to a thread and to those that it creates afterwards, so every
// thread asks once.
bool thread_may_use_ports() {
    thread_local const bool granted = iopl(3) == 0;
    return granted;
}

} // namespace

int io_open() {
    return iopl(3);
}

std::uint8_t inb(std::uint16_t port) {
    return thread_may_use_ports() ? ::inb(port) : std::uint8_t{0xFF};
}

void outb(std::uint8_t value, std::uint16_t port) {
    if (thread_may_use_ports())
        ::outb(value, port);
}

} // namespace platform
