// Health of every NVMe controller.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

constexpr int NVME_SLOTS = 48;                // devices reported at most
constexpr std::size_t NVME_RECORD_SIZE = 254; // characters of a record

// What one device says, as terminated texts, in the order of the record.
struct nvme_smart_log_norvik {
    char device_name[12];
    char critical_warning[10];
    char temperature[10]; // "%2.2f C"
    char avail_spare[10]; // the next three with "%"
    char spare_thresh[10];
    char percent_used[10];
    char data_units_read[30]; // counters, at most 2^63 - 1
    char data_units_written[30];
    char host_reads[30];
    char host_writes[30];
    char ctrl_busy_time[30];
    char power_cycles[30];
    char power_on_hours[30];
    char unsafe_shutdowns[30];
    char media_errors[30];
    char num_err_log_entries[30];
    char mn[32];        // model number
    char disk_size[32]; // KiB of namespace 1
    char sn[32];        // serial number
};

// Collects and uploads (parameters 205 and 206). Returns 0. A device that can't be opened or that
// fails a command costs its own record, or ends a one-shot run with status 1.
int getNVMeSMARTInfo();

// Renders a health page of `size` bytes into the texts. A page too short for the counters changes
// nothing.
void print_log_health(const std::uint8_t* buf, std::uint32_t size, nvme_smart_log_norvik& log);

// The upload text of a device: "00:" device name to "18:" serial number, each ended by ";", cut to
// NVME_RECORD_SIZE.
std::string nvmeRecord(const nvme_smart_log_norvik& log);
