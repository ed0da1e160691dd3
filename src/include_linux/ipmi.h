// Requests and responses of the driver transport.
#pragma once

#include <array>
#include <cstdint>

constexpr int IPMI_BUF_SIZE = 1024;

struct ipmi_rq {
    struct {
        std::uint8_t netfn; // 6 bits
        std::uint8_t lun;   // 2 bits
        std::uint8_t cmd;
        std::uint8_t target_cmd;
        std::uint16_t data_len;
        std::uint8_t* data;
    } msg;
};

struct ipmi_rs {
    std::uint8_t ccode;
    std::array<std::uint8_t, IPMI_BUF_SIZE> data;
    int data_len; // bytes in data, completion code excluded
};
