#include "kcs/qemu/qtest_ports.h"

#include "platform/platform.h"

#include <array>
#include <cstdio>
#include <string>

namespace {

line_child* machine = nullptr;

std::string ask(const char* format, unsigned port, unsigned value) {
    if (machine == nullptr)
        return "";
    std::array<char, 32> command{};
    std::snprintf(command.data(), command.size(), format, port, value);
    machine->send(command.data());
    return machine->receive();
}

} // namespace

void usePortsOf(line_child* qemu) {
    machine = qemu;
}

int platform::io_open() {
    return machine == nullptr ? -1 : 0;
}

std::uint8_t platform::inb(std::uint16_t port) {
    const std::string answer = ask("inb 0x%x", port, 0);
    return answer.compare(0, 3, "OK ") == 0
               ? static_cast<std::uint8_t>(std::stoul(answer.substr(3), nullptr, 16))
               : std::uint8_t{0xFF};
}

void platform::outb(std::uint8_t value, std::uint16_t port) {
    ask("outb 0x%x 0x%x", port, value);
}
