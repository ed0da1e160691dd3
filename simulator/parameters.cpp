#include "parameters.h"

#include "records.h"

namespace bmcsim {

constexpr size_t CHUNK_HEAD = 7;
constexpr size_t CHUNK_BYTES = 32;

struct Chunk {
    uint8_t selector = 0;
    uint32_t total = 0;
    uint32_t offset = 0;
    uint8_t index = 0;
    std::string bytes;
};

static bool hasIndex(uint8_t selector) {
    return selector == SELECTOR_COMMAND || selector == SELECTOR_RESULT;
}

bool decodeCount(const std::string& text, size_t& count) {
    if (text.size() != 2)
        return false;
    uint32_t value = 0;
    const bool valid = base255(static_cast<uint8_t>(text[0]), static_cast<uint8_t>(text[1]), value);
    count = value;
    return valid;
}

// Cuts the request into its fields. Returns what is wrong with its shape, or nothing.
static std::string readChunk(const Bytes& data, Chunk& chunk) {
    const size_t head = CHUNK_HEAD + (hasIndex(data[0]) ? 1 : 0);
    chunk.selector = data[0];
    if (data.size() < head)
        return format("%zu bytes are too few", data.size());
    if (data[1] != 0x10)
        return format("byte 1 is %02X instead of 10", data[1]);
    if (!base255(data[2], data[3], chunk.total))
        return "total length is not in base 255";
    if (!base255(data[4], data[5], chunk.offset))
        return "offset is not in base 255";
    if (data[6] != data.size() - head)
        return format("%d bytes announced, %zu sent", data[6], data.size() - head);
    if (data[6] > CHUNK_BYTES)
        return format("%d bytes in one chunk", data[6]);
    chunk.index = head > CHUNK_HEAD ? data[CHUNK_HEAD] : 0;
    chunk.bytes.assign(data.begin() + static_cast<std::ptrdiff_t>(head), data.end());
    return "";
}

// What is wrong with the chunk's place in its value, or nothing.
static std::string placeFlaw(const Chunk& chunk, const Session::Pending& pending) {
    const size_t rest = chunk.total - pending.text.size();
    if (chunk.total != pending.total)
        return format("total length was %u, is %u", pending.total, chunk.total);
    if (chunk.index != pending.index)
        return format("index was %d, is %d", pending.index, chunk.index);
    if (chunk.offset != pending.text.size())
        return format("offset %u instead of %zu", chunk.offset, pending.text.size());
    if (chunk.bytes.size() != std::min(rest, CHUNK_BYTES))
        return format("%zu bytes at offset %u of %u", chunk.bytes.size(), chunk.offset,
                      chunk.total);
    return "";
}

static void chunkComplaint(Ledger& ledger, uint8_t selector, const std::string& flaw) {
    complain(ledger, format("parameter %d (%s): ", selector, selectorName(selector)) + flaw);
}

// Opens a new value at its first chunk. A value left half-sent was cut short by its client.
static void beginValue(Session& session, Ledger& ledger, const Chunk& chunk) {
    const auto old = session.pending.find(chunk.selector);
    if (old != session.pending.end() && !old->second.damaged && old->second.total != 0)
        chunkComplaint(ledger, chunk.selector,
                       format("a new value begins after %zu of %u bytes", old->second.text.size(),
                              old->second.total));
    Session::Pending pending;
    pending.total = chunk.total;
    pending.index = chunk.index;
    session.pending[chunk.selector] = pending;
    session.begun.insert(chunk.selector);
}

// The first upload of a clear is an empty OS name, the last an empty time stamp. What it finds
// half-done stays half-done, so lists begun before or meanwhile are not held to their counts.
static void followClear(Session& session, const Completed& value) {
    if (value.selector == FIRST_SELECTOR)
        session.clearing = value.text.empty();
    if (session.clearing)
        for (auto& list : session.lists)
            list.second.damaged = true;
    if (value.selector == SELECTOR_TIME && value.text.empty())
        session.clearing = false;
}

static void takeCount(Parameters& parameters, Session& session, Ledger& ledger,
                      const Completed& value, bool refused) {
    const uint8_t list = listOfCount(value.selector);
    size_t count = 0;
    if (!decodeCount(value.text, count))
        chunkComplaint(ledger, value.selector, "no two-byte count: " + escapeText(value.text));
    const auto old = session.lists.find(list);
    if (old != session.lists.end() && !old->second.damaged &&
        old->second.received < old->second.announced)
        chunkComplaint(ledger, list,
                       format("%zu of %zu items came before the next count", old->second.received,
                              old->second.announced));
    const bool interrupted = session.clearing || refused ||
                             (count == 0 && old != session.lists.end() && old->second.damaged);
    session.lists[list] = {count, 0, interrupted};
    session.begun.insert(list);
    if (refused)
        return;
    StoredList stored;
    stored.announced = count;
    stored.owner = session.id;
    parameters.lists[list] = stored;
}

// A line longer than the agent's reader arrives in several items, and only the last one, the one
// with the line end, is counted.
static bool endsItem(uint8_t selector, const std::string& text) {
    return selector != 199 || (!text.empty() && text.back() == ';');
}

static void storeItem(Parameters& parameters, const Session& session, Ledger& ledger,
                      const Completed& value) {
    StoredList& stored = parameters.lists[value.selector];
    const bool owner = stored.owner == session.id || stored.owner == 0;
    std::string text = owner ? stored.piece + value.text : value.text;
    if (!endsItem(value.selector, value.text)) {
        if (owner)
            stored.piece = text.substr(0, 2 * MAX_VALUE);
        return;
    }
    const std::string flaw = valueFlaw(value.selector, text);
    if (!flaw.empty())
        chunkComplaint(ledger, value.selector, flaw + ": " + escapeText(text));
    if (!owner)
        return;
    stored.piece.clear();
    if (stored.items.size() < stored.announced)
        stored.items.push_back(text.substr(0, MAX_VALUE));
}

static void takeItem(Parameters& parameters, Session& session, Ledger& ledger,
                     const Completed& value, bool refused) {
    const auto list = session.lists.find(value.selector);
    if (list == session.lists.end()) {
        if (session.strict)
            chunkComplaint(ledger, value.selector, "an item without its count");
    } else if (endsItem(value.selector, value.text)) {
        Session::Progress& progress = list->second;
        progress.received++;
        if (progress.received == progress.announced + 1 && !progress.damaged)
            chunkComplaint(ledger, value.selector,
                           format("more items than the %zu announced", progress.announced));
    }
    if (!refused)
        storeItem(parameters, session, ledger, value);
}

static void takeValue(Parameters& parameters, Session& session, Ledger& ledger,
                      const Completed& value, bool refused) {
    followClear(session, value);
    if (listOfCount(value.selector) != 0)
        takeCount(parameters, session, ledger, value, refused);
    else if (countOfList(value.selector) != 0)
        takeItem(parameters, session, ledger, value, refused);
    else if (!refused) {
        const std::string flaw = valueFlaw(value.selector, value.text);
        if (!flaw.empty())
            chunkComplaint(ledger, value.selector, flaw + ": " + escapeText(value.text));
    }
    if (refused)
        return;
    StoredValue& stored = parameters.values[value.selector];
    stored.text = value.text.substr(0, MAX_VALUE);
    stored.index = value.index;
    stored.uploads++;
}

// Places a chunk of good shape. Returns what does not add up, or nothing.
static std::string placeChunk(Session& session, Ledger& ledger, const Chunk& chunk, bool refused) {
    if (chunk.offset == 0)
        beginValue(session, ledger, chunk);
    const auto found = session.pending.find(chunk.selector);
    if (found == session.pending.end()) {
        const bool known = session.strict || session.begun.count(chunk.selector) != 0;
        return known ? format("a chunk at offset %u without a beginning", chunk.offset) : "";
    }
    Session::Pending& pending = found->second;
    std::string flaw = placeFlaw(chunk, pending);
    if (!flaw.empty()) {
        session.pending.erase(found);
        return flaw;
    }
    pending.damaged = pending.damaged || refused;
    pending.text += chunk.bytes;
    return "";
}

uint8_t setParameter(Parameters& parameters, Session& session, Ledger& ledger, const Bytes& data,
                     bool refused, Completed& completed) {
    if (data.empty() || data[0] < FIRST_SELECTOR)
        return data.empty() ? CC_LENGTH_INVALID : CC_PARAMETER_UNSUPPORTED;
    if (data[0] > LAST_SELECTOR) {
        complain(ledger, format("parameter %d does not exist", data[0]));
        return CC_PARAMETER_UNSUPPORTED;
    }
    Chunk chunk;
    std::string flaw = readChunk(data, chunk);
    if (!flaw.empty()) {
        chunkComplaint(ledger, chunk.selector, flaw + ": " + hexText(data));
        return CC_LENGTH_INVALID;
    }
    flaw = placeChunk(session, ledger, chunk, refused);
    if (!flaw.empty()) {
        chunkComplaint(ledger, chunk.selector, flaw);
        return CC_OUT_OF_RANGE;
    }
    const auto found = session.pending.find(chunk.selector);
    if (found == session.pending.end() || found->second.text.size() < found->second.total)
        return CC_OK;
    const Session::Pending pending = found->second;
    session.pending.erase(found);
    const Completed value = {chunk.selector, pending.index, pending.text};
    takeValue(parameters, session, ledger, value, pending.damaged);
    if (!pending.damaged)
        completed = value;
    return CC_OK;
}

} // namespace bmcsim
