#include "command_slot.h"

#include "records.h"

#include <algorithm>

namespace bmcsim {

constexpr size_t FETCH_SIZE = 8;
constexpr uint32_t CHUNK_BYTES = 32;

static void note(CommandSlot& slot, const Ledger& ledger, const std::string& line) {
    slot.exchange.push_back(stampText(ledger) + "  " + line);
    if (slot.exchange.size() > MAX_EXCHANGE_LINES)
        slot.exchange.pop_front();
}

static void slotComplaint(CommandSlot& slot, Ledger& ledger, const std::string& text) {
    if (slot.phase == SlotPhase::DISTURBED)
        return;
    note(slot, ledger, "complaint: " + text);
    complain(ledger, "command slot: " + text);
}

void postCommand(CommandSlot& slot, Ledger& ledger, const SlotCommand& command) {
    slot.queue.push_back(command);
    note(slot, ledger,
         format("posted   index %d \"%s\"", command.index, escapeText(command.text).c_str()));
}

// What is wrong with a fetch request, or nothing.
static std::string fetchFlaw(const CommandSlot& slot, const Bytes& data, uint32_t offset,
                             uint32_t total) {
    const bool first = slot.phase != SlotPhase::PARTIAL;
    if (data[0] != 0x10 || data[2] != 0 || data[4] != 0)
        return "fixed bytes are not 10, 00 and 00";
    if (offset != (first ? 0 : slot.nextOffset) && offset != 0)
        return format("offset %u instead of %u", offset, first ? 0 : slot.nextOffset);
    const uint32_t wanted = offset == 0 ? CHUNK_BYTES : std::min(CHUNK_BYTES, total - offset);
    if (data[7] != wanted)
        return format("%d bytes wanted instead of %u", data[7], wanted);
    const uint8_t index = offset == 0 || slot.queue.empty() ? 0 : slot.queue.front().index;
    if (data[3] != index)
        return format("index %d instead of %d", data[3], index);
    return "";
}

static bool onOffer(const CommandSlot& slot) {
    return !slot.queue.empty() && slot.phase != SlotPhase::ACKNOWLEDGED &&
           slot.phase != SlotPhase::ANSWERED;
}

static void handOut(CommandSlot& slot, Ledger& ledger, uint32_t offset, uint32_t wanted,
                    Bytes& out) {
    const SlotCommand& command = slot.queue.front();
    const auto total = static_cast<uint32_t>(command.text.size());
    const uint32_t count = std::min(wanted, total - offset);
    out = {0x11, 0x00};
    appendLittleEndian(out, total, 2);
    appendLittleEndian(out, offset, 2);
    out.push_back(static_cast<uint8_t>(count));
    out.push_back(command.index);
    out.insert(out.end(), command.text.begin() + offset, command.text.begin() + offset + count);
    slot.nextOffset = offset + count;
    if (slot.phase != SlotPhase::DISTURBED)
        slot.phase = slot.nextOffset == total ? SlotPhase::FETCHED : SlotPhase::PARTIAL;
    note(slot, ledger, format("fetched  %u bytes at offset %u of %u", count, offset, total));
}

uint8_t fetchCommand(CommandSlot& slot, uint64_t session, Ledger& ledger, const Bytes& data,
                     Bytes& out) {
    if (data.size() < 2 || data[1] != SELECTOR_COMMAND)
        return data.size() < 2 ? CC_LENGTH_INVALID : CC_PARAMETER_UNSUPPORTED;
    slot.session = session;
    uint32_t offset = 0;
    if (data.size() != FETCH_SIZE || !base255(data[5], data[6], offset)) {
        slotComplaint(slot, ledger, "fetch of a wrong shape: " + hexText(data));
        return CC_LENGTH_INVALID;
    }
    const bool offered = onOffer(slot);
    const auto total = static_cast<uint32_t>(offered ? slot.queue.front().text.size() : 0);
    if (offset > total || (offset == total && offset != 0)) {
        slotComplaint(slot, ledger, format("fetch at offset %u of %u", offset, total));
        return CC_OUT_OF_RANGE;
    }
    const std::string flaw = fetchFlaw(slot, data, offset, total);
    if (!flaw.empty())
        slotComplaint(slot, ledger, "fetch: " + flaw);
    if (offered) {
        handOut(slot, ledger, offset, data[7], out);
        return CC_OK;
    }
    slot.idlePolls++;
    out = {0x11, 0, 0, 0, 0, 0, 0, 0};
    return CC_OK;
}

void disturbSlot(CommandSlot& slot, Ledger& ledger, const std::string& what) {
    note(slot, ledger, "disturbed by " + what);
    slot.phase = SlotPhase::DISTURBED;
}

static std::string keyOf(const std::string& text) {
    const std::vector<std::string> parts = splitText(text, ";");
    return parts.size() >= 3 ? parts[1] : "";
}

// A command that the agent can carry out has a key and an option byte other than 0. Text beyond
// 1,023 bytes or behind a NUL is not the agent's to see.
static bool wellFormed(const std::string& text) {
    const std::string seen = text.substr(0, std::min<size_t>(text.find('\0'), 1023));
    const std::string key = keyOf(seen);
    const size_t option = seen.find(';', seen.find(';') + 1) + 1;
    return !key.empty() && option < seen.size();
}

// An index of 10 or more leaves its later digits at the head of the text.
static bool indexFits(const CommandSlot& slot, const Completed& value, std::string& text) {
    const std::string digits = std::to_string(slot.queue.front().index);
    const std::string rest = digits.substr(1);
    text = value.text;
    if (value.index != digits[0] - '0' || text.compare(0, rest.size(), rest) != 0)
        return false;
    text.erase(0, rest.size());
    return true;
}

static void acknowledge(CommandSlot& slot, Ledger& ledger, const std::string& text) {
    if (slot.phase != SlotPhase::FETCHED)
        slotComplaint(slot, ledger, "acknowledgement out of order");
    if (text != "2;")
        slotComplaint(slot, ledger, "acknowledgement \"" + escapeText(text) + "\"");
    slot.phase = SlotPhase::ACKNOWLEDGED;
}

static void takeResult(CommandSlot& slot, Ledger& ledger, const std::string& text) {
    const std::string key = keyOf(slot.queue.front().text);
    if (slot.phase != SlotPhase::ACKNOWLEDGED)
        slotComplaint(slot, ledger, "result out of order");
    if (text != key + ";1;;" && text != key + ";0;;")
        slotComplaint(slot, ledger, "result \"" + escapeText(text) + "\"");
    slot.phase = SlotPhase::ANSWERED;
}

static void release(CommandSlot& slot, Ledger& ledger) {
    const bool carriedOut = slot.phase == SlotPhase::ANSWERED;
    const bool justified =
        slot.phase == SlotPhase::PARTIAL || slot.phase == SlotPhase::DISTURBED ||
        (slot.phase == SlotPhase::FETCHED && !wellFormed(slot.queue.front().text));
    if (!carriedOut && !justified)
        slotComplaint(slot, ledger, "release out of order");
    slot.queue.pop_front();
    slot.released++;
    slot.phase = SlotPhase::IDLE;
}

static bool opensCycle(const Completed& value) {
    return value.selector == SELECTOR_RESULT && value.index == 0 && value.text.empty();
}

// The release ends a disturbed exchange, and takes the command that was on offer with it.
static void disturbedAnswer(CommandSlot& slot, const Completed& value) {
    if (value.selector == SELECTOR_RESULT || !value.text.empty())
        return;
    if (!slot.queue.empty())
        slot.queue.pop_front();
    slot.released++;
    slot.phase = SlotPhase::IDLE;
}

static void judgeAnswer(CommandSlot& slot, Ledger& ledger, const Completed& value) {
    std::string text;
    if (slot.queue.empty() || slot.phase == SlotPhase::IDLE)
        slotComplaint(slot, ledger, "an answer to no command");
    else if (!indexFits(slot, value, text))
        slotComplaint(slot, ledger, format("answer to index %d", value.index));
    else if (value.selector == SELECTOR_RESULT)
        takeResult(slot, ledger, text);
    else if (!text.empty())
        acknowledge(slot, ledger, text);
    else
        release(slot, ledger);
}

// A client that died in the middle of a command leaves it to be opened by its successor; a
// command that was taken is gone then.
static void openCycle(CommandSlot& slot, uint64_t session, Ledger& ledger) {
    const bool taken = slot.phase == SlotPhase::ACKNOWLEDGED || slot.phase == SlotPhase::ANSWERED;
    if (slot.phase != SlotPhase::IDLE && slot.session == session)
        slotComplaint(slot, ledger, "a new cycle before the command was released");
    if (taken)
        slot.queue.pop_front();
    slot.phase = SlotPhase::IDLE;
}

void slotAnswer(CommandSlot& slot, uint64_t session, Ledger& ledger, const Completed& value) {
    const bool opening = opensCycle(value);
    const bool idle = slot.phase == SlotPhase::IDLE || slot.phase == SlotPhase::DISTURBED;
    if (opening && slot.queue.empty() && idle) { // every five seconds, not worth a line
        slot.phase = SlotPhase::IDLE;
        return;
    }
    note(slot, ledger,
         format("%d      index %d \"%s\"", value.selector, value.index,
                escapeText(value.text).c_str()));
    const bool clearing = value.index == 255 && value.text.empty();
    if (clearing)
        return;
    if (opening)
        openCycle(slot, session, ledger);
    else if (slot.phase == SlotPhase::DISTURBED)
        disturbedAnswer(slot, value);
    else
        judgeAnswer(slot, ledger, value);
}

} // namespace bmcsim
