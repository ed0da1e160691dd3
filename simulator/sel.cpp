#include "sel.h"

#include <algorithm>

namespace bmcsim {

namespace {

constexpr size_t RECORD_SIZE = 16;
constexpr uint32_t FIRST_RECORD = 0x0000;
constexpr uint32_t LAST_RECORD = 0xFFFF;

Bytes recordBytes(const SelRecord& record) {
    Bytes bytes;
    appendLittleEndian(bytes, record.id, 2);
    bytes.push_back(0x02);
    appendLittleEndian(bytes, record.time, 4);
    appendLittleEndian(bytes, record.event[0], 2); // channel and LUN are 0
    bytes.insert(bytes.end(), record.event.begin() + 1, record.event.end());
    return bytes;
}

Bytes selInfo(const Sel& sel) {
    const size_t used = sel.records.size();
    const size_t left = (std::max(sel.capacity, used) - used) * RECORD_SIZE;
    Bytes answer = {CC_OK, 0x51}; // version
    appendLittleEndian(answer, static_cast<uint32_t>(used), 2);
    appendLittleEndian(answer, static_cast<uint32_t>(std::min<size_t>(left, 0xFFFF)), 2);
    appendLittleEndian(answer, sel.lastAdd, 4);
    appendLittleEndian(answer, sel.lastErase, 4);
    answer.push_back(0); // no further operations
    return answer;
}

Bytes getEntry(const Sel& sel, const Bytes& data) {
    if (data.size() != 6)
        return {CC_LENGTH_INVALID};
    const uint32_t id = littleEndian(data, 2, 2);
    auto record = sel.records.begin();
    if (id == LAST_RECORD && !sel.records.empty())
        record = sel.records.end() - 1;
    else if (id != FIRST_RECORD)
        record = std::find_if(record, sel.records.end(),
                              [&](const SelRecord& candidate) { return candidate.id == id; });
    if (record == sel.records.end())
        return {CC_NOT_PRESENT};
    if (data[4] != 0) // parts are for those who can't take a record whole
        return {CC_OUT_OF_RANGE};
    const bool last = record + 1 == sel.records.end();
    Bytes answer = {CC_OK};
    appendLittleEndian(answer, last ? LAST_RECORD : (record + 1)->id, 2);
    const Bytes bytes = recordBytes(*record);
    answer.insert(answer.end(), bytes.begin(), bytes.end());
    return answer;
}

} // namespace

uint32_t selTime(const Sel& sel, const Ledger& ledger) {
    return sel.clockBase + static_cast<uint32_t>((ledger.nowMs - sel.clockBaseMs) / 1000);
}

void setSelTime(Sel& sel, const Ledger& ledger, uint32_t seconds) {
    sel.clockBase = seconds;
    sel.clockBaseMs = ledger.nowMs;
}

void clearSel(Sel& sel, const Ledger& ledger) {
    sel.records.clear();
    sel.lastErase = selTime(sel, ledger);
}

Bytes storageCommand(Sel& sel, const Ledger& ledger, uint8_t cmd, const Bytes& data) {
    switch (cmd) {
    case 0x40:
        return selInfo(sel);
    case 0x43:
        return getEntry(sel, data);
    case 0x48: {
        Bytes answer = {CC_OK};
        appendLittleEndian(answer, selTime(sel, ledger), 4);
        return answer;
    }
    default:
        return {CC_INVALID_COMMAND};
    }
}

namespace {

constexpr uint8_t DRIVE_SENSOR = 0x0D;
constexpr uint8_t NETWORK_SENSOR = 0xD0;
constexpr uint8_t CONTROLLER_SENSOR_NUMBER = 0x5F;
constexpr uint8_t ASSERTED = 0x70;
constexpr uint8_t DEASSERTED = 0xF0;

const char* driveCondition(uint8_t eventType) {
    static const char* const conditions[] = {
        "drive missing", "drive fault", "predictive failure", "hot spare",
        nullptr,         "out of sync", "in failed array",    "rebuild in progress"};
    return eventType >= 0xA0 && eventType <= 0xA7 ? conditions[eventType - 0xA0] : nullptr;
}

// Why an event with one of the agent's two sensor types is not one of its events; else nullptr.
const char* eventFlaw(const Bytes& event) {
    if (event[2] != DRIVE_SENSOR && event[2] != NETWORK_SENSOR)
        return nullptr;
    if (event[0] != 0x41)
        return "generator is not 41";
    if (event[1] != 0x04)
        return "message revision is not 04";
    if (event[2] == NETWORK_SENSOR) {
        const bool fixed = event[3] == 0xFF && event[4] == 0x6F && event[7] == 0xFF;
        return fixed && (event[5] == 0xA1 || event[5] == 0xA2) ? nullptr : "no link event";
    }
    if (event[3] != 0xFF && event[3] != CONTROLLER_SENSOR_NUMBER)
        return "unknown drive sensor number";
    if (event[3] == 0xFF && event[7] != 0xFF)
        return "last byte is not FF";
    if (event[4] != ASSERTED && event[4] != DEASSERTED)
        return "neither asserted nor deasserted";
    return driveCondition(event[5]) != nullptr ? nullptr : "unknown drive condition";
}

std::string driveWords(const Bytes& event) {
    const std::string place = event[3] == CONTROLLER_SENSOR_NUMBER
                                  ? format("C%dE%dS%d", event[7] >> 6, event[7] & 0x3F, event[6])
                                  : format("drive %d", event[6]);
    const char* condition = driveCondition(event[5]);
    const char* direction = event[4] == ASSERTED     ? "asserted"
                            : event[4] == DEASSERTED ? "deasserted"
                                                     : "unknown direction";
    return format("drive slot sensor %02X  %-10s  %-10s  ", event[3], place.c_str(), direction) +
           (condition != nullptr ? condition : format("condition %02X", event[5]));
}

} // namespace

Bytes platformEvent(Sel& sel, Ledger& ledger, const Bytes& data) {
    if (data.size() != 8) {
        complain(ledger, format("platform event of %zu bytes instead of 8", data.size()));
        return {CC_LENGTH_INVALID};
    }
    if (const char* flaw = eventFlaw(data))
        complain(ledger, "platform event " + hexText(data) + ": " + flaw);
    if (sel.records.size() >= sel.capacity)
        return {CC_OUT_OF_SPACE};
    sel.lastAdd = selTime(sel, ledger);
    sel.records.push_back({sel.nextId, sel.lastAdd, data});
    sel.nextId = static_cast<uint16_t>(sel.nextId == 0xFFFE ? 1 : sel.nextId + 1);
    return {CC_OK};
}

std::string selWords(const SelRecord& record) {
    const Bytes& event = record.event;
    const std::string line = format("%4d  %s  ", record.id, timeText(record.time).c_str());
    if (event[2] == DRIVE_SENSOR)
        return line + driveWords(event);
    if (event[2] != NETWORK_SENSOR)
        return line + "record " + hexText(recordBytes(record));
    const char* link = event[5] == 0xA1   ? "link up"
                       : event[5] == 0xA2 ? "link down"
                                          : "unknown change";
    return line + format("network interface %d  %s", event[6], link);
}

} // namespace bmcsim
