#include "oem.h"

#include <algorithm>

namespace bmcsim {

namespace {

constexpr size_t MAX_READ = 125; // what fits a client's 128-byte frame

Bytes prepareFile(Files& files, uint8_t id) {
    const auto found = files.offered.find(id);
    if (found == files.offered.end())
        return {CC_NOT_PRESENT};
    files.reservation = std::max<uint16_t>(1, static_cast<uint16_t>(files.reservation + 1));
    files.reserved = id;
    files.pollsLeft = found->second.preparingPolls;
    found->second.prepared++;
    Bytes answer = {CC_OK};
    appendLittleEndian(answer, files.reservation, 2);
    return answer;
}

Bytes fileStatus(Files& files, int64_t length) {
    if (files.pollsLeft > 0) {
        files.pollsLeft--;
        return {CC_OK, 0x01};
    }
    Bytes answer = {CC_OK, 0x00};
    appendLittleEndian(answer, static_cast<uint32_t>(length), 4);
    return answer;
}

Bytes readFile(const Files& files, OfferedFile& file, int64_t length, Ledger& ledger,
               const Bytes& data) {
    const size_t offset = littleEndian(data, 3, 4);
    const size_t count = littleEndian(data, 7, 2);
    const size_t end = offset + count;
    if (files.pollsLeft > 0)
        complain(ledger, "file read before it was ready");
    if (count > MAX_READ || (static_cast<int64_t>(end) > length && length > 0))
        complain(ledger, format("file %02X: %zu bytes at offset %zu of %lld", files.reserved, count,
                                offset, static_cast<long long>(length)));
    if (count > MAX_READ || (offset >= file.content.size() && count > 0))
        return {CC_OUT_OF_RANGE};
    file.reads++;
    Bytes answer = {CC_OK};
    for (size_t at = offset; at < std::min(end, file.content.size()); at++)
        answer.push_back(file.content[at]);
    return answer;
}

} // namespace

Bytes fileCommand(Files& files, Ledger& ledger, const Bytes& data) {
    constexpr size_t SIZES[] = {2, 3, 9, 3}; // of the requests from 05 on
    if (data.empty() || data[0] < 0x05 || data[0] > 0x08)
        return {CC_INVALID_FIELD};
    if (data.size() != SIZES[data[0] - 0x05])
        return {CC_LENGTH_INVALID};
    if (data[0] == 0x05)
        return prepareFile(files, data[1]);
    const auto found = files.offered.find(files.reserved);
    if (files.reservation == 0 || found == files.offered.end() ||
        littleEndian(data, 1, 2) != files.reservation) {
        complain(ledger, "file request without a valid reservation: " + hexText(data));
        return {CC_RESERVATION_LOST};
    }
    OfferedFile& file = found->second;
    const int64_t length =
        file.reportedLength >= 0 ? file.reportedLength : static_cast<int64_t>(file.content.size());
    if (data[0] == 0x06)
        return fileStatus(files, length);
    if (data[0] == 0x07)
        return readFile(files, file, length, ledger, data);
    file.done++;
    files.reserved = 0;
    return {CC_OK};
}

Bytes capabilityFile(bool nvme, size_t size) {
    Bytes file(size, 0);
    if (nvme && size > 27)
        file[27] = 0x04;
    return file;
}

Bytes driveMapFile(const std::vector<MappedDrive>& drives) {
    Bytes file(16, 0);
    file[7] = static_cast<uint8_t>(drives.size());
    file[8] = static_cast<uint8_t>(drives.size() >> 8);
    for (const MappedDrive& drive : drives) {
        Bytes record(108, 0);
        record[28] = static_cast<uint8_t>(drive.slot);
        record[29] = static_cast<uint8_t>(drive.slot >> 8);
        std::copy_n(drive.serial.begin(), std::min<size_t>(drive.serial.size(), 21),
                    record.begin() + 75);
        file.insert(file.end(), record.begin(), record.end());
    }
    return file;
}

int64_t tickWatchdog(Watchdog& watchdog, Ledger& ledger) {
    if (watchdog.running && ledger.nowMs >= watchdog.deadlineMs) {
        watchdog.running = false;
        watchdog.expired++;
        trace(ledger, "watchdog expired");
    }
    return watchdog.running ? (watchdog.deadlineMs - ledger.nowMs + 999) / 1000 : 0;
}

Bytes watchdogCommand(Watchdog& watchdog, Ledger& ledger, uint8_t cmd, const Bytes& data) {
    if (!(cmd == WATCHDOG_COMMAND ? watchdog.answersNew : watchdog.answersOld))
        return {CC_INVALID_COMMAND};
    if (data.empty() || data.size() != (data[0] == 0x03 ? 3U : 1U))
        return {CC_LENGTH_INVALID};
    const auto left = static_cast<uint8_t>(tickWatchdog(watchdog, ledger));
    const uint8_t running = watchdog.running ? 1 : 0;
    switch (data[0]) {
    case 0x01:
        if (!watchdog.running)
            return {CC_WRONG_STATE};
        watchdog.resets++;
        break;
    case 0x02:
        return {CC_OK, running, watchdog.period, 0, left, 0};
    case 0x03:
        watchdog.period = data[1];
        watchdog.running = data[1] != 0;
        watchdog.enabled += watchdog.running ? 1 : 0;
        break;
    default:
        return {CC_INVALID_FIELD};
    }
    watchdog.deadlineMs = ledger.nowMs + 1000 * watchdog.period;
    return {CC_OK};
}

namespace {

Bytes queryPosition(HostPanel& panel, Ledger& ledger, const Position& position, const Bytes& data) {
    constexpr size_t SERIAL_AT = 7; // behind the completion code
    constexpr size_t ANSWER_SIZE = 27;
    if (data[2] > 1 || data[5] > 7 || data[3] > 23 || data[4] != 0x01 || data[6] != 0x00 ||
        data[7] != 0x19) {
        complain(ledger, "NVMe position query: " + hexText(data));
        return {CC_INVALID_FIELD};
    }
    Bytes answer(ANSWER_SIZE, 0);
    const auto found = panel.bays.find(position);
    if (found == panel.bays.end())
        return answer;
    const std::string serial = (found->second.serial + std::string(20, ' ')).substr(0, 20);
    std::copy(serial.begin(), serial.end(), answer.begin() + SERIAL_AT);
    return answer;
}

Bytes switchLed(HostPanel& panel, Ledger& ledger, const Position& position, const Bytes& data) {
    const auto found = panel.bays.find(position);
    if (found == panel.bays.end() || data[4] > 1) {
        complain(ledger, "locate request for no drive: " + hexText(data));
        return {CC_INVALID_FIELD};
    }
    found->second.led = data[4];
    found->second.located++;
    return {CC_OK};
}

} // namespace

Bytes panelCommand(HostPanel& panel, Ledger& ledger, const Bytes& data) {
    if (data.size() < 2)
        return {CC_LENGTH_INVALID};
    const bool flag = data[0] == 0xA9;
    const bool writes = data[1] == 1;
    if ((!flag && data[0] != 0x6C) || data[1] > 1)
        return {CC_INVALID_FIELD};
    if (data.size() != (flag ? 2U : writes ? 6U : 8U))
        return {CC_LENGTH_INVALID};
    if (flag && !writes)
        return {CC_OK, panel.restartClean};
    if (flag) {
        panel.restartClean = 1;
        return {CC_OK};
    }
    const Position position = {data[2], data[5], data[3]};
    return writes ? switchLed(panel, ledger, position, data)
                  : queryPosition(panel, ledger, position, data);
}

} // namespace bmcsim
