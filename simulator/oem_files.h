// Files that the BMC offers for download (OEM NetFn 0x30, command 0xA0), by file id:
//   05 id                      prepare: reservation id (2 bytes)
//   06 rid rid                 status: 01 still preparing, else 00 and the length (4 bytes)
//   07 rid rid offset(4) n(2)  read: up to n bytes
//   08 rid rid                 done
// All numbers little-endian. File 0x09 tells what the firmware can do, 0x0B is the BIOS drive map.
#pragma once

#include "core.h"

#include <map>

namespace bmcsim {

constexpr uint8_t FILE_CAPABILITY = 0x09;
constexpr uint8_t FILE_DRIVE_MAP = 0x0B;

struct OfferedFile {
    Bytes content;
    int64_t reportedLength = -1; // -1: the true one
    size_t preparingPolls = 1;   // how often the status is "still preparing"
    size_t prepared = 0, reads = 0, done = 0;
};

struct Files {
    std::map<uint8_t, OfferedFile> offered;
    uint16_t reservation = 0; // the current one; 0 none
    uint8_t reserved = 0;     // its file
    size_t pollsLeft = 0;
};

uint8_t fileCommand(Files& files, Ledger& ledger, const Bytes& data, Bytes& out);

// A capability file of `size` bytes: byte 27 bit 2 says that NVMe is supported.
Bytes capabilityFile(bool nvme, size_t size);

struct MappedDrive {
    std::string serial; // at most 21 characters, longer ones are cut
    uint16_t slot = 0;
};
// A drive map: 16 bytes of head, the count at 7..8, then 108 bytes a drive: the slot at 28..29, the
// serial in two pieces at 75..80 and 81..95.
Bytes driveMapFile(const std::vector<MappedDrive>& drives);

} // namespace bmcsim
