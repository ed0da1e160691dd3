// Byte offsets of the NVMe structures that the agent reads and writes. All numbers in them are
// little-endian. The kernels name and pack the same bytes differently, hence byte arrays.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

constexpr std::uint32_t IDENTIFY_SIZE = 4096;
constexpr std::size_t HEALTH_SIZE = 512;

// Pages that the driver fills; it wants them on a boundary of 8 bytes.
template <std::size_t Size>
struct alignas(8) nvme_page : std::array<std::uint8_t, Size> {};

using nvme_controller_data = nvme_page<IDENTIFY_SIZE>;
using nvme_namespace_data = nvme_page<IDENTIFY_SIZE>;
using nvme_health_information_page = nvme_page<HEALTH_SIZE>;

// Submission queue entry (NVMe 1.4, 4.2)
constexpr std::size_t CMD_OPC = 0;    // 1 byte
constexpr std::size_t CMD_NSID = 4;   // 4 bytes
constexpr std::size_t CMD_CDW10 = 40; // 4 bytes

constexpr std::uint8_t NVME_OPC_GET_LOG_PAGE = 0x02; // NVMe 1.4, 5.14
constexpr std::uint8_t NVME_OPC_IDENTIFY = 0x06;     // NVMe 1.4, 5.15
constexpr std::uint32_t IDENTIFY_NAMESPACE = 0;      // cdw10 of IDENTIFY
constexpr std::uint32_t IDENTIFY_CONTROLLER = 1;
constexpr std::uint8_t NVME_LOG_HEALTH = 0x02;              // SMART / health information
constexpr std::uint32_t NVME_WHOLE_CONTROLLER = 0xFFFFFFFF; // nsid

// Completion queue entry (NVMe 1.4, 4.6): the status word's bit 0 is the phase tag, bits 1 to 8
// are the status code, bits 9 to 11 the status code type.
constexpr std::size_t CPL_STATUS = 14; // 2 bytes
constexpr std::uint16_t CPL_STATUS_ERROR_BITS = 0x0FFE;

// Identify controller data (NVMe 1.4, 5.15.2.2)
constexpr std::size_t CTRL_SN = 4; // serial number, blank-padded
constexpr std::size_t CTRL_SN_SIZE = 20;
constexpr std::size_t CTRL_MN = 24; // model number, blank-padded
constexpr std::size_t CTRL_MN_SIZE = 40;

// Identify namespace data (NVMe 1.4, 5.15.2.1)
constexpr std::size_t NS_NSZE = 0;   // 8 bytes: size in logical blocks
constexpr std::size_t NS_FLBAS = 26; // bits 0 to 3: the format in use
constexpr std::size_t NS_LBAF = 128; // 16 formats of 4 bytes
constexpr std::size_t NS_LBAF_SIZE = 4;
constexpr std::size_t NS_LBAF_LBADS = 2; // log2 of the sector size

// SMART / health information log (NVMe 1.4, 5.14.1.2)
constexpr std::size_t HEALTH_CRITICAL_WARNING = 0;
constexpr std::size_t HEALTH_TEMPERATURE = 1;  // 2 bytes, kelvin
constexpr std::size_t HEALTH_AVAIL_SPARE = 3;  // percent
constexpr std::size_t HEALTH_SPARE_THRESH = 4; // percent
constexpr std::size_t HEALTH_PERCENT_USED = 5;
// Counters of 16 bytes, one after the other: data units read, data units written, host reads,
// host writes, controller busy time, power cycles, power-on hours, unsafe shutdowns, media errors,
// error log entries.
constexpr std::size_t HEALTH_COUNTERS = 32;
constexpr std::size_t HEALTH_COUNTER_SIZE = 16;
