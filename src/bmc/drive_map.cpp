#include "bmc/drive_map.h"

#include "bytes.h"
#include "text.h"

#include <algorithm>

namespace {

constexpr std::size_t SLOT = 28;
constexpr std::size_t SERIAL = 75;
constexpr std::size_t SERIAL_SIZE = 21;

} // namespace

bool addChunk(drive_map_record& record, std::string_view chunk) {
    chunk = chunk.substr(0, DRIVE_CHUNK_SIZE);
    std::copy(chunk.begin(), chunk.end(), record.bytes.begin() + record.filled);
    record.filled += DRIVE_CHUNK_SIZE;
    return record.filled == DRIVE_RECORD_SIZE;
}

drive_slot driveOf(const drive_map_record& record) {
    drive_slot drive;
    const char* const slot = &record.bytes[SLOT];
    if (*slot != '\0')
        drive.slot = littleEndian<std::uint16_t>(reinterpret_cast<const std::uint8_t*>(slot));
    const std::string_view serial(&record.bytes[SERIAL], SERIAL_SIZE);
    drive.serial = serial.substr(0, serial.find('\0'));
    trim(drive.serial);
    return drive;
}
