// What every fuzzer needs: its input taken apart, a check, and silence on standard output.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

struct fuzz_bytes {
    const std::uint8_t* data;
    std::size_t left;

    // The next byte, or `otherwise` at the end.
    std::uint8_t next(std::uint8_t otherwise) {
        if (left == 0)
            return otherwise;
        --left;
        return *data++;
    }

    // As many as there are of the next `count` bytes.
    std::basic_string_view<std::uint8_t> take(std::size_t count) {
        const std::basic_string_view<std::uint8_t> taken(data, std::min(count, left));
        data += taken.size();
        left -= taken.size();
        return taken;
    }
};

static void require(bool holds) {
    if (!holds)
        std::abort();
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;
}
