// The BIOS drive map, which pairs each drive's serial number with its slot.
//
// Head, 16 bytes: 7..8 number of drives. Then a record of 108 bytes per drive: 28..29 slot number,
// 75..95 serial number. Numbers are least significant byte first. Slot and serial number are
// copied as texts: what follows a zero byte does not count.
#pragma once

#include <array>
#include <string>
#include <string_view>

constexpr unsigned DRIVE_MAP_HEAD_SIZE = 16;
constexpr unsigned DRIVE_MAP_COUNT = 7;
constexpr unsigned DRIVE_MAP_MOST = 1024; // drives that are read, whatever number the head tells

constexpr std::size_t DRIVE_RECORD_SIZE = 108;
constexpr std::size_t DRIVE_CHUNK_SIZE = 27; // a record arrives in four chunks

// A record on its way. A chunk that is short leaves the rest of its place zero.
struct drive_map_record {
    std::array<char, DRIVE_RECORD_SIZE> bytes{};
    std::size_t filled = 0;
};

// Adds the next chunk; true when it completes the record.
bool addChunk(drive_map_record& record, std::string_view chunk);

struct drive_slot {
    std::string serial; // white space normalised
    int slot = 0;
};

drive_slot driveOf(const drive_map_record& record);
