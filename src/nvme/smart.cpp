#include "nvme/smart.h"

#include "bmc/report.h"
#include "bytes.h"
#include "nvme/device.h"
#include "text.h"

#include <algorithm>
#include <cstdio>
#include <limits>

namespace {

constexpr const char* NVME_LABEL = "NVME Storage items ->";
constexpr list_report REPORT = {"NVME Storage items %d%d\n",
                                "Available NVMe : ",
                                nullptr,
                                NVME_LABEL,
                                PARM_NVME_COUNT,
                                PARM_NVME,
                                false,
                                replaceEmptyToNA};

template <std::size_t N>
void putPercent(char (&field)[N], unsigned value) {
    copyText(field, std::to_string(value) + "%");
}

template <std::size_t N>
void putCounter(char (&field)[N], const std::uint8_t* counter) {
    constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
    const auto low = littleEndian<std::uint64_t>(counter);
    const auto high = littleEndian<std::uint64_t>(counter + 8);
    copyText(field, std::to_string(high != 0 || low > most ? most : low));
}

template <std::size_t N>
void putText(char (&field)[N], const std::uint8_t* source, std::size_t size) {
    char visible[64];
    nvme_strvis(visible, source, sizeof visible, static_cast<int>(size));
    copyText(field, visible);
}

// Everything that the device tells; false when it fails.
bool readDevice(const std::string& name, nvme_smart_log_norvik& log) {
    copyText(log.device_name, name);
    const nvme_controller device(name);
    if (!device.isOpen())
        return false;

    nvme_health_information_page health;
    if (!read_logpage(device.fd(), NVME_LOG_HEALTH, NVME_WHOLE_CONTROLLER, health.data(),
                      HEALTH_SIZE))
        return false;
    print_log_health(health.data(), HEALTH_SIZE, log);

    nvme_controller_data cdata;
    nvme_namespace_data nsdata;
    if (!read_controller_data(device.fd(), cdata) || !read_namespace_data(device.fd(), 1, nsdata))
        return false;
    putText(log.mn, &cdata[CTRL_MN], CTRL_MN_SIZE);
    putText(log.sn, &cdata[CTRL_SN], CTRL_SN_SIZE);
    const std::uint64_t bytes =
        littleEndian<std::uint64_t>(&nsdata[NS_NSZE]) * ns_get_sector_size(nsdata);
    copyText(log.disk_size, std::to_string(bytes >> 10));
    return true;
}

} // namespace

void print_log_health(const std::uint8_t* buf, std::uint32_t size, nvme_smart_log_norvik& log) {
    if (size < HEALTH_COUNTERS + 10 * HEALTH_COUNTER_SIZE)
        return;
    copyText(log.critical_warning, std::to_string(unsigned{buf[HEALTH_CRITICAL_WARNING]}));
    const float kelvin = littleEndian<std::uint16_t>(buf + HEALTH_TEMPERATURE);
    char celsius[32];
    std::snprintf(celsius, sizeof celsius, "%2.2f C", static_cast<double>(kelvin - 273.15F));
    copyText(log.temperature, celsius);
    putPercent(log.avail_spare, buf[HEALTH_AVAIL_SPARE]);
    putPercent(log.spare_thresh, buf[HEALTH_SPARE_THRESH]);
    putPercent(log.percent_used, buf[HEALTH_PERCENT_USED]);

    const std::uint8_t* counter = buf + HEALTH_COUNTERS;
    for (auto field :
         {&log.data_units_read, &log.data_units_written, &log.host_reads, &log.host_writes,
          &log.ctrl_busy_time, &log.power_cycles, &log.power_on_hours, &log.unsafe_shutdowns,
          &log.media_errors, &log.num_err_log_entries}) {
        putCounter(*field, counter);
        counter += HEALTH_COUNTER_SIZE;
    }
}

std::string nvmeRecord(const nvme_smart_log_norvik& log) {
    std::string record;
    int number = 0;
    for (const char* value :
         {log.device_name, log.critical_warning, log.temperature, log.avail_spare, log.spare_thresh,
          log.percent_used, log.data_units_read, log.data_units_written, log.host_reads,
          log.host_writes, log.ctrl_busy_time, log.power_cycles, log.power_on_hours,
          log.unsafe_shutdowns, log.media_errors, log.num_err_log_entries, log.mn, log.disk_size,
          log.sn}) {
        char label[16];
        std::snprintf(label, sizeof label, "%02d:", number++);
        record.append(label).append(value).append(";");
    }
    record.resize(std::min(record.size(), NVME_RECORD_SIZE));
    return record;
}

int getNVMeSMARTInfo() {
    ipmiCmdSet(PARM_NVME_COUNT, itemCount(0));
    list *head = nullptr, *prev = nullptr;
    int count = 0;
    std::vector<std::string> names = listControllers();
    names.resize(std::min<std::size_t>(names.size(), NVME_SLOTS));
    for (const std::string& name : names) {
        nvme_smart_log_norvik log{};
        if (!readDevice(name, log)) {
            deviceFailed(NVME_LABEL, name);
            continue;
        }
        list* record = appendNode(head, prev);
        record->no = count++;
        copyText(record->parm, nvmeRecord(log));
    }
    showList(REPORT, head, count);
    uploadList(REPORT, head, count);
    freeNodes(head, prev);
    return 0;
}
