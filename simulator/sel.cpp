#include "sel.h"

#include <algorithm>

namespace bmcsim {

constexpr size_t RECORD_SIZE = 16;
constexpr uint16_t FIRST_RECORD = 0x0000;
constexpr uint16_t LAST_RECORD = 0xFFFF;

uint32_t selTime(const Sel& sel, const Ledger& ledger) {
    return sel.clockBase + static_cast<uint32_t>((ledger.nowMs - sel.clockBaseMs) / 1000);
}

void setSelTime(Sel& sel, const Ledger& ledger, uint32_t seconds) {
    sel.clockBase = seconds;
    sel.clockBaseMs = ledger.nowMs;
}

uint16_t selRecordId(const SelRecord& record) {
    return static_cast<uint16_t>(record[0] | record[1] << 8);
}

static uint8_t addRecord(Sel& sel, const Ledger& ledger, SelRecord record) {
    if (sel.records.size() >= sel.capacity) {
        sel.overflow = true;
        return CC_OUT_OF_SPACE;
    }
    const uint32_t now = selTime(sel, ledger);
    record[0] = static_cast<uint8_t>(sel.nextId);
    record[1] = static_cast<uint8_t>(sel.nextId >> 8);
    if (record[2] < 0xE0) // records of type E0h to FFh carry no time
        for (size_t i = 0; i < 4; i++)
            record[3 + i] = static_cast<uint8_t>(now >> (8 * i));
    sel.records.push_back(record);
    sel.nextId = static_cast<uint16_t>(sel.nextId == 0xFFFE ? 1 : sel.nextId + 1);
    sel.lastAdd = now;
    return CC_OK;
}

static size_t freeRecords(const Sel& sel) {
    return sel.capacity > sel.records.size() ? sel.capacity - sel.records.size() : 0;
}

static void selInfo(const Sel& sel, Bytes& out) {
    out = {0x51}; // version
    appendLittleEndian(out, static_cast<uint32_t>(sel.records.size()), 2);
    appendLittleEndian(out, static_cast<uint32_t>(std::min<size_t>(freeRecords(sel) * 16, 0xFFFF)),
                       2);
    appendLittleEndian(out, sel.lastAdd, 4);
    appendLittleEndian(out, sel.lastErase, 4);
    // overflow; delete, reserve and allocation information are supported
    out.push_back(static_cast<uint8_t>((sel.overflow ? 0x80 : 0) | 0x0B));
}

static void selAllocation(const Sel& sel, Bytes& out) {
    appendLittleEndian(out, static_cast<uint32_t>(sel.capacity), 2);
    appendLittleEndian(out, RECORD_SIZE, 2);
    appendLittleEndian(out, static_cast<uint32_t>(freeRecords(sel)), 2);
    appendLittleEndian(out, static_cast<uint32_t>(freeRecords(sel)), 2);
    out.push_back(1);
}

static size_t findRecord(const Sel& sel, uint32_t id) {
    if (sel.records.empty())
        return 0;
    if (id == FIRST_RECORD)
        return 0;
    if (id == LAST_RECORD)
        return sel.records.size() - 1;
    size_t at = 0;
    while (at < sel.records.size() && selRecordId(sel.records[at]) != id)
        at++;
    return at;
}

static bool reservationHolds(const Sel& sel, const Bytes& data) {
    return sel.reservation != 0 && littleEndian(data, 0, 2) == sel.reservation;
}

static uint8_t getEntry(const Sel& sel, const Bytes& data, Bytes& out) {
    if (data.size() != 6)
        return CC_LENGTH_INVALID;
    const size_t at = findRecord(sel, littleEndian(data, 2, 2));
    if (at >= sel.records.size())
        return CC_NOT_PRESENT;
    const size_t offset = data[4];
    if (offset != 0 && !reservationHolds(sel, data))
        return CC_RESERVATION_LOST;
    if (offset >= RECORD_SIZE)
        return CC_OUT_OF_RANGE;
    const size_t count = std::min<size_t>(data[5], RECORD_SIZE - offset);
    const bool last = at + 1 == sel.records.size();
    appendLittleEndian(out, last ? LAST_RECORD : selRecordId(sel.records[at + 1]), 2);
    const auto* from = sel.records[at].data() + offset;
    out.insert(out.end(), from, from + count);
    return CC_OK;
}

static uint8_t addEntry(Sel& sel, const Ledger& ledger, const Bytes& data, Bytes& out) {
    if (data.size() != RECORD_SIZE)
        return CC_LENGTH_INVALID;
    SelRecord record{};
    std::copy(data.begin(), data.end(), record.begin());
    const uint8_t code = addRecord(sel, ledger, record);
    if (code == CC_OK)
        appendLittleEndian(out, selRecordId(sel.records.back()), 2);
    return code;
}

static uint8_t deleteEntry(Sel& sel, const Bytes& data, Bytes& out) {
    if (data.size() != 4)
        return CC_LENGTH_INVALID;
    if (!reservationHolds(sel, data))
        return CC_RESERVATION_LOST;
    const size_t at = findRecord(sel, littleEndian(data, 2, 2));
    if (at >= sel.records.size())
        return CC_NOT_PRESENT;
    appendLittleEndian(out, selRecordId(sel.records[at]), 2);
    sel.records.erase(sel.records.begin() + static_cast<std::ptrdiff_t>(at));
    sel.reservation = 0;
    return CC_OK;
}

static uint8_t clearSel(Sel& sel, const Ledger& ledger, const Bytes& data, Bytes& out) {
    if (data.size() != 6)
        return CC_LENGTH_INVALID;
    if (!reservationHolds(sel, data))
        return CC_RESERVATION_LOST;
    if (data[2] != 'C' || data[3] != 'L' || data[4] != 'R' || (data[5] != 0xAA && data[5] != 0))
        return CC_INVALID_FIELD;
    if (data[5] == 0xAA) {
        sel.records.clear();
        sel.overflow = false;
        sel.lastErase = selTime(sel, ledger);
    }
    out = {0x01}; // erasure completed
    return CC_OK;
}

static void reserve(Sel& sel, Bytes& out) {
    sel.reservation = static_cast<uint16_t>(sel.reservation == 0xFFFF ? 1 : sel.reservation + 1);
    appendLittleEndian(out, sel.reservation, 2);
}

static uint8_t setTimeCommand(Sel& sel, const Ledger& ledger, const Bytes& data) {
    if (data.size() != 4)
        return CC_LENGTH_INVALID;
    setSelTime(sel, ledger, littleEndian(data, 0, 4));
    return CC_OK;
}

static uint8_t repositoryCommand(uint8_t cmd, Bytes& out) {
    if (cmd == 0x20) // no record, no space, never changed, nothing supported but reserve
        out = {0x51, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x02};
    else if (cmd == 0x22)
        out = {0x01, 0x00};
    else
        return CC_NOT_PRESENT;
    return CC_OK;
}

uint8_t storageCommand(Sel& sel, Ledger& ledger, uint8_t cmd, const Bytes& data, Bytes& out) {
    switch (cmd) {
    case 0x20: // Get SDR Repository Info
    case 0x22: // Reserve SDR Repository
    case 0x23: // Get SDR
        return repositoryCommand(cmd, out);
    case 0x40:
        selInfo(sel, out);
        return CC_OK;
    case 0x41:
        selAllocation(sel, out);
        return CC_OK;
    case 0x42:
        reserve(sel, out);
        return CC_OK;
    case 0x43:
        return getEntry(sel, data, out);
    case 0x44:
        return addEntry(sel, ledger, data, out);
    case 0x46:
        return deleteEntry(sel, data, out);
    case 0x47:
        return clearSel(sel, ledger, data, out);
    case 0x48: // Get SEL Time
        appendLittleEndian(out, selTime(sel, ledger), 4);
        return CC_OK;
    case 0x49: // Set SEL Time
        return setTimeCommand(sel, ledger, data);
    case 0x5C: // Get SEL Time UTC Offset: unspecified
        out = {0xFF, 0x07};
        return CC_OK;
    default:
        return CC_INVALID_COMMAND;
    }
}

static const char* eventFlaw(const Bytes& data);

uint8_t platformEvent(Sel& sel, Ledger& ledger, const Bytes& data) {
    if (data.size() != 8) {
        complain(ledger, format("platform event of %zu bytes instead of 8", data.size()));
        return CC_LENGTH_INVALID;
    }
    if (const char* flaw = eventFlaw(data))
        complain(ledger, "platform event " + hexText(data) + ": " + flaw);
    SelRecord record{};
    record[2] = 0x02;    // a system event record
    record[7] = data[0]; // generator; channel and LUN stay 0
    std::copy(data.begin() + 1, data.end(), record.begin() + 9);
    return addRecord(sel, ledger, record);
}

constexpr uint8_t DRIVE_SENSOR = 0x0D;
constexpr uint8_t NETWORK_SENSOR = 0xD0;
constexpr uint8_t CONTROLLER_SENSOR_NUMBER = 0x5F;
constexpr uint8_t ASSERTED = 0x70;
constexpr uint8_t DEASSERTED = 0xF0;

static const char* driveCondition(uint8_t eventType) {
    switch (eventType) {
    case 0xA0:
        return "drive missing";
    case 0xA1:
        return "drive fault";
    case 0xA2:
        return "predictive failure";
    case 0xA3:
        return "hot spare";
    case 0xA5:
        return "out of sync";
    case 0xA6:
        return "in failed array";
    case 0xA7:
        return "rebuild in progress";
    default:
        return nullptr;
    }
}

// Why an event with one of the agent's two sensor types is not one of its events; else nullptr.
static const char* eventFlaw(const Bytes& data) {
    if (data[2] != DRIVE_SENSOR && data[2] != NETWORK_SENSOR)
        return nullptr;
    if (data[0] != 0x41)
        return "generator is not 41";
    if (data[1] != 0x04)
        return "message revision is not 04";
    if (data[2] == NETWORK_SENSOR) {
        const bool fixed = data[3] == 0xFF && data[4] == 0x6F && data[7] == 0xFF;
        return fixed && (data[5] == 0xA1 || data[5] == 0xA2) ? nullptr : "no link event";
    }
    if (data[3] != 0xFF && data[3] != CONTROLLER_SENSOR_NUMBER)
        return "unknown drive sensor number";
    if (data[3] == 0xFF && data[7] != 0xFF)
        return "last byte is not FF";
    if (data[4] != ASSERTED && data[4] != DEASSERTED)
        return "neither asserted nor deasserted";
    return driveCondition(data[5]) != nullptr ? nullptr : "unknown drive condition";
}

static std::string driveWords(const SelRecord& record) {
    const uint8_t where = record[14];
    const std::string place = record[11] == CONTROLLER_SENSOR_NUMBER
                                  ? format("C%dE%dS%d", record[15] >> 6, record[15] & 0x3F, where)
                                  : format("drive %d", where);
    const char* condition = driveCondition(record[13]);
    const char* direction = record[12] == ASSERTED     ? "asserted"
                            : record[12] == DEASSERTED ? "deasserted"
                                                       : "unknown direction";
    return format("drive slot sensor %02X  %-10s  %-10s  ", record[11], place.c_str(), direction) +
           (condition != nullptr ? condition : format("condition %02X", record[13]));
}

static std::string networkWords(const SelRecord& record) {
    const char* link = record[13] == 0xA1   ? "link up"
                       : record[13] == 0xA2 ? "link down"
                                            : "unknown change";
    return format("network interface %d  %s", record[14], link);
}

std::string selWords(const SelRecord& record) {
    const Bytes bytes(record.begin(), record.end());
    std::string line =
        format("%4d  %s  ", selRecordId(record), timeText(littleEndian(bytes, 3, 4)).c_str());
    if (record[2] == 0x02 && record[10] == DRIVE_SENSOR)
        return line + driveWords(record);
    if (record[2] == 0x02 && record[10] == NETWORK_SENSOR)
        return line + networkWords(record);
    return line + "record " + hexText(bytes);
}

} // namespace bmcsim
