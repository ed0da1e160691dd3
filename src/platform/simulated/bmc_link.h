// The simulated platform's connection to a BMC: the byte protocol that QEMU's ipmi-bmc-extern
// speaks, from the host's side.
//
// Message: sequence, NetFn << 2 | LUN, command, data (an answer's first is the completion code),
// checksum (all bytes sum to 0 mod 256), then 0xA0. Inside a message 0xA0, 0xA1 and 0xAA travel as
// 0xAA and the byte with bit 4 set. Bytes ended by 0xA1 are a control command, ignored here.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simulated {

// The transport that VYN_SIM_TRANSPORT names: driver (default), kcs, kcs2 or none.
std::string transport();

// How long a silent BMC is waited for, from VYN_SIM_TIMEOUT_MS (3000 when unset).
int timeoutMs();

struct bmc_answer {
    std::uint8_t sequence = 0;
    std::uint8_t netfn = 0; // odd
    std::uint8_t cmd = 0;
    std::vector<std::uint8_t> data; // completion code first
};

// Not thread-safe: a link belongs to one caller at a time.
class bmc_link {
  public:
    bmc_link() = default;
    ~bmc_link() {
        drop();
    }
    bmc_link(const bmc_link&) = delete;
    bmc_link& operator=(const bmc_link&) = delete;

    // Connects to VYN_SIM_BMC unless connected. False when it is unset or nobody answers.
    bool connect();
    void drop();

    // Sends one request over a link that connect() made. Returns the sequence byte it carries, or
    // -1 after dropping the connection.
    int send(std::uint8_t netfn, std::uint8_t lun, std::uint8_t cmd, const std::uint8_t* data,
             std::size_t length);

    enum class result { answered, timed_out, interrupted, disconnected };
    // Waits for the next well-formed answer; anything else that arrives is dropped.
    result receive(bmc_answer& answer, int timeout_ms);

  private:
    bool takeAnswer(bmc_answer& answer);

    int m_fd = -1;
    std::uint8_t m_sequence = 0;
    std::vector<std::uint8_t> m_received; // raw bytes of messages still to be read
};

} // namespace simulated
