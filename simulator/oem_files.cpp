#include "oem_files.h"

#include <algorithm>

namespace bmcsim {

constexpr size_t MAX_READ = 125; // what fits a client's 128-byte frame

static uint8_t prepare(Files& files, const Bytes& data, Bytes& out) {
    if (data.size() != 2)
        return CC_LENGTH_INVALID;
    const auto found = files.offered.find(data[1]);
    if (found == files.offered.end())
        return CC_NOT_PRESENT;
    files.reservation =
        static_cast<uint16_t>(files.reservation == 0xFFFF ? 1 : files.reservation + 1);
    files.reserved = data[1];
    files.pollsLeft = found->second.preparingPolls;
    found->second.prepared++;
    appendLittleEndian(out, files.reservation, 2);
    return CC_OK;
}

static int64_t fileLength(const OfferedFile& file) {
    return file.reportedLength >= 0 ? file.reportedLength
                                    : static_cast<int64_t>(file.content.size());
}

static uint8_t status(Files& files, const OfferedFile& file, Bytes& out) {
    if (files.pollsLeft > 0) {
        files.pollsLeft--;
        out = {0x01};
        return CC_OK;
    }
    out = {0x00};
    appendLittleEndian(out, static_cast<uint32_t>(fileLength(file)), 4);
    return CC_OK;
}

static uint8_t readFile(const Files& files, OfferedFile& file, Ledger& ledger, const Bytes& data,
                        Bytes& out) {
    if (data.size() != 9)
        return CC_LENGTH_INVALID;
    const size_t offset = littleEndian(data, 3, 4);
    const size_t count = littleEndian(data, 7, 2);
    if (files.pollsLeft > 0)
        complain(ledger, "file read before it was ready");
    const bool beyond = static_cast<int64_t>(offset + count) > fileLength(file);
    if (count > MAX_READ || (beyond && fileLength(file) > 0))
        complain(ledger, format("file %02X: %zu bytes at offset %zu of %lld", files.reserved, count,
                                offset, static_cast<long long>(fileLength(file))));
    if (count > MAX_READ || (offset >= file.content.size() && count > 0))
        return CC_OUT_OF_RANGE;
    const size_t end = std::min(offset + count, file.content.size());
    out.assign(file.content.begin() + static_cast<std::ptrdiff_t>(offset),
               file.content.begin() + static_cast<std::ptrdiff_t>(end));
    file.reads++;
    return CC_OK;
}

uint8_t fileCommand(Files& files, Ledger& ledger, const Bytes& data, Bytes& out) {
    if (data.empty())
        return CC_LENGTH_INVALID;
    if (data[0] == 0x05)
        return prepare(files, data, out);
    if (data[0] < 0x06 || data[0] > 0x08)
        return CC_INVALID_FIELD;
    if (data.size() < 3)
        return CC_LENGTH_INVALID;
    const auto found = files.offered.find(files.reserved);
    if (files.reservation == 0 || found == files.offered.end() ||
        littleEndian(data, 1, 2) != files.reservation) {
        complain(ledger, "file request without a valid reservation: " + hexText(data));
        return CC_RESERVATION_LOST;
    }
    if (data[0] == 0x07)
        return readFile(files, found->second, ledger, data, out);
    if (data.size() != 3)
        return CC_LENGTH_INVALID;
    if (data[0] == 0x06)
        return status(files, found->second, out);
    found->second.done++;
    files.reserved = 0;
    return CC_OK;
}

Bytes capabilityFile(bool nvme, size_t size) {
    Bytes file(size, 0);
    if (nvme && size > 27)
        file[27] = 0x04;
    return file;
}

static void putText(Bytes& record, size_t at, const std::string& text, size_t from, size_t size) {
    for (size_t i = 0; i < size && from + i < text.size(); i++)
        record[at + i] = static_cast<uint8_t>(text[from + i]);
}

Bytes driveMapFile(const std::vector<MappedDrive>& drives) {
    Bytes file(16, 0);
    file[7] = static_cast<uint8_t>(drives.size());
    file[8] = static_cast<uint8_t>(drives.size() >> 8);
    for (const MappedDrive& drive : drives) {
        Bytes record(108, 0);
        record[28] = static_cast<uint8_t>(drive.slot);
        record[29] = static_cast<uint8_t>(drive.slot >> 8);
        putText(record, 75, drive.serial, 0, 6);
        putText(record, 81, drive.serial, 6, 15);
        file.insert(file.end(), record.begin(), record.end());
    }
    return file;
}

} // namespace bmcsim
