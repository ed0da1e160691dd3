// One KCS exchange over ports whose every answer is the next byte of the input: the first byte is
// the request's length; status and data reads follow as they come.
#include "fuzz/fuzz_bytes.h"
#include "kcs_linux.h"
#include "platform/platform.h"

#include <memory>
#include <unistd.h>

static fuzz_bytes input{};

int platform::io_open() {
    return 0;
}

// Once the input is used up the interface is in ERROR with a byte waiting, which ends every wait.
std::uint8_t platform::inb(std::uint16_t) {
    return input.next(0xC1);
}

void platform::outb(std::uint8_t, std::uint16_t) {}

// The exchange's pauses take no time here.
extern "C" int usleep(useconds_t) {
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    input = {data, size};
    // Frames of the exact size, so that a byte beyond one is seen.
    const int length = input.next(2);
    const auto request = std::make_unique<unsigned char[]>(FRAME_SIZE);
    const auto response = std::make_unique<unsigned char[]>(FRAME_SIZE);
    const int result = kcs_exchange(request.get(), response.get(), length, 0);
    require(result == 0 || result == 1);
    require(resp_data_len >= 0 && resp_data_len <= FRAME_SIZE);
    return 0;
}
