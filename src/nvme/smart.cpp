#include "nvme/smart.h"

#include "bmc/parameter_upload.h"
#include "config/logs.h"
#include "nvme/device.h"
#include "platform/platform.h"
#include "shell.h"
#include "text.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <vector>

constexpr const char* NVME_LABEL = "NVME Storage items ->";
constexpr const char* NVME_LISTING = "ls /dev/nvme* | grep -v ns1 | sed 's/\\/dev\\///g'";

std::array<nvme_smart_log_norvik, NVME_SLOTS> IBInformation;

template <std::size_t N>
static void putPercent(char (&field)[N], unsigned value) {
    copyText(field, std::to_string(value) + "%");
}

template <std::size_t N>
static void putCounter(char (&field)[N], const std::uint8_t* counter) {
    constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
    const auto low = littleEndian<std::uint64_t>(counter);
    const auto high = littleEndian<std::uint64_t>(counter + 8);
    copyText(field, std::to_string(high != 0 || low > most ? most : low));
}

void print_log_health(const std::uint8_t* buf, std::uint32_t size, int num) {
    if (size < HEALTH_COUNTERS + 10 * HEALTH_COUNTER_SIZE || num < 0 || num >= NVME_SLOTS)
        return;
    nvme_smart_log_norvik& slot = IBInformation[static_cast<std::size_t>(num)];

    copyText(slot.critical_warning, std::to_string(unsigned{buf[HEALTH_CRITICAL_WARNING]}));
    const float kelvin = littleEndian<std::uint16_t>(buf + HEALTH_TEMPERATURE);
    char celsius[32];
    std::snprintf(celsius, sizeof celsius, "%2.2f C", static_cast<double>(kelvin - 273.15F));
    copyText(slot.temperature, celsius);
    putPercent(slot.avail_spare, buf[HEALTH_AVAIL_SPARE]);
    putPercent(slot.spare_thresh, buf[HEALTH_SPARE_THRESH]);
    putPercent(slot.percent_used, buf[HEALTH_PERCENT_USED]);

    const std::uint8_t* counter = buf + HEALTH_COUNTERS;
    for (auto field :
         {&slot.data_units_read, &slot.data_units_written, &slot.host_reads, &slot.host_writes,
          &slot.ctrl_busy_time, &slot.power_cycles, &slot.power_on_hours, &slot.unsafe_shutdowns,
          &slot.media_errors, &slot.num_err_log_entries}) {
        putCounter(*field, counter);
        counter += HEALTH_COUNTER_SIZE;
    }
}

static std::vector<std::string> listDevices() {
    std::vector<std::string> names;
    std::string line;
    shell_capture listing(NVME_LISTING, NVME_LABEL);
    while (listing.readPiece(line)) {
        dropNewline(line);
        names.push_back(line);
    }
    return names;
}

static void readHealth(const char* name, int num) {
    int fd = -1;
    open_dev(name, fd, 1, 1);
    const auto page = get_log_buffer(HEALTH_SIZE);
    read_logpage(fd, NVME_LOG_HEALTH, NVME_WHOLE_CONTROLLER, page.get(), HEALTH_SIZE);
    print_log_health(page.get(), HEALTH_SIZE, num);
    platform::nvme_close(fd);
}

// A device that can't be opened now leaves both fields empty.
static void readModelAndSize(const char* name, nvme_smart_log_norvik& slot) {
    int fd = -1;
    if (open_dev(name, fd, 0, 0) != 0)
        return;

    nvme_controller_data cdata;
    read_controller_data(fd, cdata);
    char model[64];
    nvme_strvis(model, &cdata[CTRL_MN], sizeof model, CTRL_MN_SIZE);
    copyText(slot.mn, model);

    nvme_namespace_data nsdata;
    read_namespace_data(fd, 1, nsdata);
    const std::uint64_t bytes =
        littleEndian<std::uint64_t>(&nsdata[NS_NSZE]) * ns_get_sector_size(nsdata);
    copyText(slot.disk_size, std::to_string(bytes >> 10));
    platform::nvme_close(fd);
}

static void readSerial(const char* name, nvme_smart_log_norvik& slot) {
    int fd = -1;
    open_dev(name, fd, 1, 1);
    nvme_controller_data cdata;
    read_controller_data(fd, cdata);
    char serial[128];
    nvme_strvis(serial, &cdata[CTRL_SN], sizeof serial, CTRL_SN_SIZE);
    copyText(slot.sn, serial);
    platform::nvme_close(fd);
}

static void readDevice(std::string name, int num) {
    nvme_smart_log_norvik& slot = IBInformation[static_cast<std::size_t>(num)];
    copyText(slot.device_name, name);
    trim(name);
    readHealth(name.c_str(), num);
    readModelAndSize(name.c_str(), slot);
    readSerial(name.c_str(), slot);
}

std::string nvmeRecord(const nvme_smart_log_norvik& slot) {
    std::string record;
    int number = 0;
    for (const char* value :
         {slot.device_name, slot.critical_warning, slot.temperature, slot.avail_spare,
          slot.spare_thresh, slot.percent_used, slot.data_units_read, slot.data_units_written,
          slot.host_reads, slot.host_writes, slot.ctrl_busy_time, slot.power_cycles,
          slot.power_on_hours, slot.unsafe_shutdowns, slot.media_errors, slot.num_err_log_entries,
          slot.mn, slot.disk_size, slot.sn}) {
        char label[16];
        std::snprintf(label, sizeof label, "%02d:", number++);
        record.append(label).append(value).append(";");
    }
    record.resize(std::min(record.size(), NVME_RECORD_SIZE));
    return record;
}

static void uploadRecords(const list* head, int count) {
    ipmiCmdSet(PARM_NVME_COUNT, itemCount(count));
    for (const list* record = head; record != nullptr; record = record->next) {
        printLog(NVME_LABEL, record->parm);
        ipmiCmdSet(PARM_NVME, record->parm);
    }
}

int getNVMeSMARTInfo() {
    ipmiCmdSet(PARM_NVME_COUNT, itemCount(0));
    IBInformation.fill({});

    int count = 0;
    for (const std::string& name : listDevices()) {
        if (count == NVME_SLOTS)
            break;
        readDevice(name, count++);
    }

    list* head = nullptr;
    list* prev = nullptr;
    for (int num = 0; num < count; num++) {
        list* record = appendNode(head, prev);
        record->no = num;
        copyText(record->parm, nvmeRecord(IBInformation[static_cast<std::size_t>(num)]));
    }
    std::printf("NVME Storage items %d%d\n", count / 255, count % 255);
    for (list* record = head; record != nullptr; record = record->next) {
        std::string text = record->parm;
        replaceEmptyToNA(text);
        copyText(record->parm, text);
        std::printf("Available NVMe : %s\n", record->parm);
    }
    if (count > 0)
        uploadRecords(head, count);
    freeNodes(head, prev);
    return 0;
}
