#include "command_slot.h"

#include "records.h"

#include <algorithm>

namespace bmcsim {

namespace {

void note(CommandSlot& slot, const Ledger& ledger, const std::string& line) {
    constexpr size_t MAX_LINES = 500;
    slot.exchange.push_back(stampText(ledger) + "  " + line);
    if (slot.exchange.size() > MAX_LINES)
        slot.exchange.pop_front();
}

void object(CommandSlot& slot, Ledger& ledger, const std::string& text) {
    if (slot.phase == SlotPhase::DISTURBED)
        return;
    note(slot, ledger, "complaint: " + text);
    complain(ledger, "command slot: " + text);
}

// ---- fetching ----

bool onOffer(const CommandSlot& slot) {
    return !slot.queue.empty() && slot.phase != SlotPhase::ACKNOWLEDGED &&
           slot.phase != SlotPhase::ANSWERED;
}

// The request that a client sends at this point; it may begin again at any time.
Bytes rightFetch(const CommandSlot& slot, bool beginning, uint32_t total) {
    const uint32_t at = beginning || slot.phase != SlotPhase::PARTIAL ? 0 : slot.nextOffset;
    const size_t wanted = at == 0 ? CHUNK_BYTES : std::min<size_t>(CHUNK_BYTES, total - at);
    const uint8_t index = at == 0 || slot.queue.empty() ? 0 : slot.queue.front().index;
    Bytes right = {0x10, SELECTOR_COMMAND, 0, index, 0};
    for (const size_t byte : {size_t{at % 255}, size_t{at / 255}, wanted})
        right.push_back(static_cast<uint8_t>(byte));
    return right;
}

Bytes handOut(CommandSlot& slot, const Ledger& ledger, uint32_t offset, uint32_t wanted) {
    const Value& command = slot.queue.front();
    const auto total = static_cast<uint32_t>(command.text.size());
    const std::string chunk = command.text.substr(offset, wanted);
    Bytes answer = {CC_OK, 0x11, 0x00};
    appendLittleEndian(answer, total, 2);
    appendLittleEndian(answer, offset, 2);
    answer.push_back(static_cast<uint8_t>(chunk.size()));
    answer.push_back(command.index);
    answer.insert(answer.end(), chunk.begin(), chunk.end());
    slot.nextOffset = offset + static_cast<uint32_t>(chunk.size());
    if (slot.phase != SlotPhase::DISTURBED)
        slot.phase = slot.nextOffset == total ? SlotPhase::FETCHED : SlotPhase::PARTIAL;
    note(slot, ledger,
         format("fetched  %zu bytes at offset %u of %u", chunk.size(), offset, total));
    return answer;
}

// ---- answers ----

// A command that the agent can carry out has a key and an option byte other than 0. Text beyond
// 1,023 bytes or behind a NUL is not the agent's to see.
bool wellFormed(const std::string& text) {
    const Lines parts = splitText(text.substr(0, std::min<size_t>(text.find('\0'), 1023)), ";");
    return parts.size() >= 3 && !parts[1].empty() && (parts.size() > 3 || !parts[2].empty());
}

// The text behind the index. An index of 10 or more leaves its later digits at the head of the
// text. Nothing when the index is another one than that of the command on offer.
std::optional<std::string> answerText(const CommandSlot& slot, const Value& value) {
    const std::string digits = std::to_string(slot.queue.front().index);
    if (value.index != digits[0] - '0' || value.text.rfind(digits.substr(1), 0) != 0)
        return {};
    return value.text.substr(digits.size() - 1);
}

void endExchange(CommandSlot& slot) {
    if (!slot.queue.empty())
        slot.queue.pop_front();
    slot.released++;
    slot.phase = SlotPhase::IDLE;
}

// One step of the exchange: it must come in its phase and be what it should be.
void step(CommandSlot& slot, Ledger& ledger, const char* name, SlotPhase in, SlotPhase next,
          const std::string& text, const Lines& allowed) {
    if (slot.phase != in)
        object(slot, ledger, std::string(name) + " out of order");
    if (std::find(allowed.begin(), allowed.end(), text) == allowed.end())
        object(slot, ledger, std::string(name) + " \"" + escapeText(text) + "\"");
    slot.phase = next;
}

void release(CommandSlot& slot, Ledger& ledger) {
    const bool refused = slot.phase == SlotPhase::FETCHED && !wellFormed(slot.queue.front().text);
    if (slot.phase != SlotPhase::ANSWERED && slot.phase != SlotPhase::PARTIAL && !refused)
        object(slot, ledger, "release out of order");
    endExchange(slot);
}

void judgeAnswer(CommandSlot& slot, Ledger& ledger, const Value& value) {
    if (slot.queue.empty() || slot.phase == SlotPhase::IDLE) {
        object(slot, ledger, "an answer to no command");
        return;
    }
    const auto text = answerText(slot, value);
    const Lines parts = splitText(slot.queue.front().text, ";");
    const std::string key = parts.size() >= 3 ? parts[1] : "";
    if (!text)
        object(slot, ledger, format("answer to index %d", value.index));
    else if (value.selector == SELECTOR_RESULT)
        step(slot, ledger, "result", SlotPhase::ACKNOWLEDGED, SlotPhase::ANSWERED, *text,
             {key + ";1;;", key + ";0;;"});
    else if (!text->empty())
        step(slot, ledger, "acknowledgement", SlotPhase::FETCHED, SlotPhase::ACKNOWLEDGED, *text,
             {"2;"});
    else
        release(slot, ledger);
}

// A client that died in the middle of a command leaves it to be opened by its successor; a
// command that was taken is gone then.
void openCycle(CommandSlot& slot, uint64_t session, Ledger& ledger) {
    if (slot.phase != SlotPhase::IDLE && slot.session == session)
        object(slot, ledger, "a new cycle before the command was released");
    if (slot.phase == SlotPhase::ACKNOWLEDGED || slot.phase == SlotPhase::ANSWERED)
        slot.queue.pop_front();
    slot.phase = SlotPhase::IDLE;
}

} // namespace

void postCommand(CommandSlot& slot, const Ledger& ledger, const Value& command) {
    slot.queue.push_back(command);
    note(slot, ledger,
         format("posted   index %d \"%s\"", command.index, escapeText(command.text).c_str()));
}

Bytes fetchCommand(CommandSlot& slot, uint64_t session, Ledger& ledger, const Bytes& data) {
    if (data.size() < 2 || data[1] != SELECTOR_COMMAND)
        return {data.size() < 2 ? CC_LENGTH_INVALID : CC_PARAMETER_UNSUPPORTED};
    slot.session = session;
    const auto offset = data.size() == 8 ? base255(data[5], data[6]) : std::nullopt;
    if (!offset) {
        object(slot, ledger, "fetch of a wrong shape: " + hexText(data));
        return {CC_LENGTH_INVALID};
    }
    const bool offered = onOffer(slot);
    const auto total = static_cast<uint32_t>(offered ? slot.queue.front().text.size() : 0);
    if (*offset > total || (*offset == total && *offset != 0)) {
        object(slot, ledger, format("fetch at offset %u of %u", *offset, total));
        return {CC_OUT_OF_RANGE};
    }
    const Bytes right = rightFetch(slot, *offset == 0, total);
    if (data != right)
        object(slot, ledger, "fetch " + hexText(data) + " instead of " + hexText(right));
    if (offered)
        return handOut(slot, ledger, *offset, data[7]);
    slot.idlePolls++;
    return {CC_OK, 0x11, 0, 0, 0, 0, 0, 0, 0};
}

void disturbSlot(CommandSlot& slot, const Ledger& ledger, const std::string& what) {
    note(slot, ledger, "disturbed by " + what);
    slot.phase = SlotPhase::DISTURBED;
}

void slotAnswer(CommandSlot& slot, uint64_t session, Ledger& ledger, const Value& value) {
    const bool opening =
        value.selector == SELECTOR_RESULT && value.index == 0 && value.text.empty();
    const bool disturbed = slot.phase == SlotPhase::DISTURBED;
    if (opening && slot.queue.empty() && (disturbed || slot.phase == SlotPhase::IDLE)) {
        slot.phase = SlotPhase::IDLE; // every five seconds, not worth a line
        return;
    }
    note(slot, ledger,
         format("%d      index %d \"%s\"", value.selector, value.index,
                escapeText(value.text).c_str()));
    if (value.index == 255 && value.text.empty())
        return; // a clear of everything
    if (opening)
        openCycle(slot, session, ledger);
    else if (!disturbed)
        judgeAnswer(slot, ledger, value);
    else if (value.selector == SELECTOR_COMMAND && value.text.empty())
        endExchange(slot); // takes the command that was on offer with it
}

} // namespace bmcsim
