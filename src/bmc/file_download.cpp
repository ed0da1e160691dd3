#include "bmc/file_download.h"

#include "bmc/drive_map.h"
#include "bmc/request.h"
#include "bytes.h"
#include "config/logs.h"
#include "state/flags.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

namespace {

using std::chrono::steady_clock;

constexpr BYTE prepare_file = 0x05;
constexpr BYTE get_status = 0x06;
constexpr BYTE read_bytes = 0x07;
constexpr BYTE end_transfer = 0x08;

constexpr BYTE capability_file = 0x09;
constexpr BYTE drive_map_file = 0x0B;
constexpr BYTE still_preparing = 0x01;

constexpr auto POLL_PAUSE = std::chrono::microseconds(10);
constexpr auto POLL_LIMIT = std::chrono::seconds(30);

constexpr DWORD CAPABILITY_READ_SIZE = 32;
constexpr DWORD NVME_BYTE = 27;
constexpr BYTE NVME_BIT = 0x04;

// A transfer under way.
struct transfer {
    const char* title; // of its error lines
    BYTE reservation[2] = {};
    DWORD file_length = 0;
};

// Sends one request; a failure is logged.
bmc_response send(const transfer& file, std::initializer_list<BYTE> data, const char* failure) {
    const bmc_response response = askBmc(NETFN_OEM, CMD_OEM_FILE_DOWNLOAD, data);
    if (!response.ok())
        printErrLog(file.title, failure);
    return response;
}

bool waitUntilReady(transfer& file) {
    const char* const failure = "prepare file download done fail";
    const auto deadline = steady_clock::now() + POLL_LIMIT;
    for (;;) {
        const bmc_response status =
            send(file, {get_status, file.reservation[0], file.reservation[1]}, failure);
        if (!status.ok())
            return false;
        if (status.data[0] != still_preparing) {
            file.file_length = littleEndian<std::uint32_t>(&status.data[1]);
            return true;
        }
        if (steady_clock::now() >= deadline || stopRequested()) {
            printErrLog(file.title, failure);
            return false;
        }
        std::this_thread::sleep_for(POLL_PAUSE);
    }
}

bool startTransfer(transfer& file, BYTE file_id) {
    const bmc_response prepared = send(file, {prepare_file, file_id}, "prepare file download fail");
    if (!prepared.ok())
        return false;
    std::copy_n(prepared.data.begin(), sizeof file.reservation, file.reservation);
    return waitUntilReady(file);
}

bmc_response readPiece(const transfer& file, DWORD offset, DWORD count) {
    BYTE place[6];
    longTo4Bytes(static_cast<long>(offset), place);
    longTo2Bytes(static_cast<long>(count), place + 4);
    return send(file,
                {read_bytes, file.reservation[0], file.reservation[1], place[0], place[1], place[2],
                 place[3], place[4], place[5]},
                "file download fail");
}

bool endTransfer(const transfer& file) {
    return send(file, {end_transfer, file.reservation[0], file.reservation[1]},
                "file download done fail")
        .ok();
}

// Reads the records that follow the head until `drives` of them are written to the map file.
bool saveDrives(const transfer& file, unsigned drives) {
    drive_map_record record;
    for (DWORD position = DRIVE_MAP_HEAD_SIZE; position < file.file_length;) {
        const DWORD count = std::min<DWORD>(file.file_length - position, DRIVE_CHUNK_SIZE);
        const bmc_response piece = readPiece(file, position, count);
        if (!piece.ok() || stopRequested())
            return false;
        position += count;
        if (drives == 0)
            break;
        if (!addChunk(record, piece.text()))
            continue;
        const drive_slot drive = driveOf(record);
        printHddMappingLog(drive.serial, std::to_string(drive.slot), 0);
        record = {};
        drives--;
    }
    return true;
}

} // namespace

void longTo4Bytes(long value, BYTE* array) {
    putLittleEndian(array, static_cast<std::uint32_t>(value));
}

void longTo2Bytes(long value, BYTE* array) {
    putLittleEndian(array, static_cast<std::uint16_t>(value));
}

int isSupportedNVMe() {
    transfer file{"isSupportedNVMe ->"};
    if (!startTransfer(file, capability_file))
        return 0;
    const bmc_response content =
        readPiece(file, 0, std::min(file.file_length & 0xFF, CAPABILITY_READ_SIZE));
    if (!content.ok() || !endTransfer(file))
        return 0;
    const bool supported = content.length > NVME_BYTE && (content.data[NVME_BYTE] & NVME_BIT) != 0;
    std::puts(supported ? "firmware support NVMe" : "firmware don't support NVMe");
    return supported ? 1 : 0;
}

int isSupportedSaveBiosHdd() {
    transfer file{"isSupportedSaveBiosHdd ->"};
    if (!startTransfer(file, drive_map_file))
        return 0;
    const bmc_response head = readPiece(file, 0, DRIVE_MAP_HEAD_SIZE);
    if (!head.ok())
        return 0;
    if (head.length != DRIVE_MAP_HEAD_SIZE) {
        printErrLog(file.title, "read head fail");
        return 0;
    }
    const unsigned drives = littleEndian<std::uint16_t>(&head.data[DRIVE_MAP_COUNT]);
    printHddMappingLog("Hdd count", std::to_string(drives), 1);
    if (drives == 0) {
        printErrLog(file.title, "hdd count 0");
        return 0;
    }
    return saveDrives(file, std::min(drives, DRIVE_MAP_MOST)) && endTransfer(file) ? 1 : 0;
}
