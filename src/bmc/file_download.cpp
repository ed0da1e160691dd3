#include "bmc/file_download.h"

#include "config/logs.h"
#include "smipmi.h"
#include "text.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

namespace {

constexpr BYTE prepare_file = 0x05;
constexpr BYTE get_status = 0x06;
constexpr BYTE read_bytes = 0x07;
constexpr BYTE end_transfer = 0x08;

constexpr BYTE capability_file = 0x09;
constexpr BYTE drive_map_file = 0x0B;
constexpr BYTE still_preparing = 0x01;

constexpr auto POLL_PAUSE = std::chrono::microseconds(10);
constexpr auto POLL_LIMIT = std::chrono::seconds(30);

constexpr BYTE CAPABILITY_READ_SIZE = 32;
constexpr DWORD NVME_BYTE = 27;
constexpr BYTE NVME_BIT = 0x04;
constexpr unsigned HEAD_SIZE = 16;

// A transfer under way.
struct transfer {
    const char* title; // of its error lines
    BYTE reservation[2] = {};
    DWORD file_length = 0;
};

struct transfer_response {
    BYTE bytes[RESPONSE_SIZE] = {};
    DWORD length = 0;

    std::string_view text() const {
        return {reinterpret_cast<const char*>(bytes), length};
    }
};

// Sends one request; on failure logs `failure` and returns false.
template <std::size_t N>
bool send(const transfer& file, const BYTE (&data)[N], transfer_response& response,
          const char* failure) {
    response = {};
    if (runIpmiCmd(BMC_ADDRESS, NETFN_OEM, CMD_OEM_FILE_DOWNLOAD, data, static_cast<int>(N),
                   response.bytes, &response.length) == 0)
        return true;
    printErrLog(file.title, failure);
    return false;
}

bool waitUntilReady(transfer& file) {
    const char* const failure = "prepare file download done fail";
    const auto deadline = std::chrono::steady_clock::now() + POLL_LIMIT;
    transfer_response response;
    for (;;) {
        if (!send(file, {get_status, file.reservation[0], file.reservation[1]}, response, failure))
            return false;
        if (response.bytes[0] != still_preparing)
            break;
        if (std::chrono::steady_clock::now() >= deadline) {
            printErrLog(file.title, failure);
            return false;
        }
        std::this_thread::sleep_for(POLL_PAUSE);
    }
    for (int i = 3; i >= 0; i--)
        file.file_length = file.file_length << 8 | response.bytes[1 + i];
    return true;
}

bool startTransfer(transfer& file, BYTE file_id) {
    transfer_response response;
    if (!send(file, {prepare_file, file_id}, response, "prepare file download fail"))
        return false;
    std::memcpy(file.reservation, response.bytes, sizeof file.reservation);
    return waitUntilReady(file);
}

bool readPiece(const transfer& file, DWORD offset, DWORD count, transfer_response& response) {
    BYTE data[9] = {read_bytes, file.reservation[0], file.reservation[1]};
    longTo4Bytes(static_cast<long>(offset), data + 3);
    longTo2Bytes(static_cast<long>(count), data + 7);
    return send(file, data, response, "file download fail");
}

bool endTransfer(const transfer& file) {
    transfer_response response;
    return send(file, {end_transfer, file.reservation[0], file.reservation[1]}, response,
                "file download done fail");
}

// Reads the records that follow the head until `drives` of them are written to the map file.
bool saveDrives(const transfer& file, int drives) {
    drive_map_reader reader;
    transfer_response response;
    for (DWORD position = HEAD_SIZE; position < file.file_length;) {
        const DWORD count = std::min<DWORD>(file.file_length - position, DRIVE_CHUNK_SIZE);
        if (!readPiece(file, position, count, response))
            return false;
        position += count;
        if (drives == 0)
            break;
        const auto drive = readDriveChunk(reader, response.text());
        if (drive.has_value()) {
            printHddMappingLog(drive->serial, std::to_string(drive->slot), 0);
            drives--;
        }
    }
    return true;
}

BYTE byteAt(std::string_view bytes, std::size_t position) {
    return position < bytes.size() ? static_cast<BYTE>(bytes[position]) : BYTE{0};
}

std::string_view textAt(std::string_view bytes, std::size_t position, std::size_t size) {
    const std::string_view field = bytes.substr(std::min(position, bytes.size()), size);
    return field.substr(0, field.find('\0'));
}

} // namespace

void longTo4Bytes(long value, BYTE* array) {
    for (int i = 0; i < 4; i++)
        array[i] = static_cast<BYTE>(value >> 8 * i);
}

void longTo2Bytes(long value, BYTE* array) {
    for (int i = 0; i < 2; i++)
        array[i] = static_cast<BYTE>(value >> 8 * i);
}

std::optional<drive_slot> readDriveChunk(drive_map_reader& reader, std::string_view bytes) {
    constexpr std::size_t FIRST_PIECE = 6, SECOND_PIECE = 15;
    drive_slot& drive = reader.drive;
    switch (reader.chunk++ % 4) {
    case 1: // a text copy of the number: nothing follows a zero low byte
        drive.slot = byteAt(bytes, 1) == 0 ? 0 : byteAt(bytes, 1) | byteAt(bytes, 2) << 8;
        return std::nullopt;
    case 2:
        drive.serial = textAt(bytes, 21, FIRST_PIECE);
        return std::nullopt;
    case 3: {
        if (drive.serial.size() == FIRST_PIECE)
            drive.serial += textAt(bytes, 0, SECOND_PIECE);
        trim(drive.serial);
        drive_slot complete;
        std::swap(complete, drive);
        return complete;
    }
    default:
        return std::nullopt;
    }
}

int isSupportedNVMe() {
    transfer file{"isSupportedNVMe ->"};
    if (!startTransfer(file, capability_file))
        return 0;
    const BYTE count = std::min(static_cast<BYTE>(file.file_length), CAPABILITY_READ_SIZE);
    transfer_response response;
    if (!readPiece(file, 0, count, response))
        return 0;
    const bool supported =
        response.length > NVME_BYTE && (response.bytes[NVME_BYTE] & NVME_BIT) != 0;
    if (!endTransfer(file))
        return 0;
    std::puts(supported ? "firmware support NVMe" : "firmware don't support NVMe");
    return supported ? 1 : 0;
}

int isSupportedSaveBiosHdd() {
    transfer file{"isSupportedSaveBiosHdd ->"};
    transfer_response head;
    if (!startTransfer(file, drive_map_file) || !readPiece(file, 0, HEAD_SIZE, head))
        return 0;
    if (head.length != HEAD_SIZE) {
        printErrLog(file.title, "read head fail");
        return 0;
    }
    const int drives = head.bytes[7] | head.bytes[8] << 8;
    printHddMappingLog("Hdd count", std::to_string(drives), 1);
    if (drives == 0) {
        printErrLog(file.title, "hdd count 0");
        return 0;
    }
    return saveDrives(file, drives) && endTransfer(file) ? 1 : 0;
}
