// Numbers in least-significant-byte-first byte arrays, as IPMI and NVMe carry them.
#pragma once

#include <cstddef>
#include <cstdint>

template <class Number>
Number littleEndian(const std::uint8_t* bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = sizeof(Number); i-- > 0;)
        value = value << 8 | bytes[i];
    return static_cast<Number>(value);
}

template <class Number>
void putLittleEndian(std::uint8_t* bytes, Number value) {
    for (std::size_t i = 0; i < sizeof(Number); i++)
        bytes[i] = static_cast<std::uint8_t>(static_cast<std::uint64_t>(value) >> 8 * i);
}
