#include "parameters.h"

#include "records.h"

#include <algorithm>

namespace bmcsim {

namespace {

constexpr size_t CHUNK_HEAD = 7;

// What a chunk is taken into.
struct Desk {
    Parameters& parameters;
    Session& session;
    Ledger& ledger;
};

struct Chunk {
    uint8_t selector = 0;
    uint32_t total = 0;
    uint32_t offset = 0;
    uint8_t index = 0;
    std::string bytes;
};

void object(Desk& desk, uint8_t selector, const std::string& flaw) {
    complain(desk.ledger, format("parameter %d (%s): ", selector, selectorName(selector)) + flaw);
}

// Cuts the request into its fields. Returns what is wrong with its shape, or nothing.
std::string readChunk(const Bytes& data, Chunk& chunk) {
    chunk.selector = data[0];
    const size_t head = CHUNK_HEAD + (isIndexed(chunk.selector) ? 1 : 0);
    if (data.size() < head)
        return format("%zu bytes are too few", data.size());
    if (data[1] != 0x10)
        return format("byte 1 is %02X instead of 10", data[1]);
    const auto total = base255(data[2], data[3]);
    const auto offset = base255(data[4], data[5]);
    if (!total || !offset)
        return "total length or offset is not in base 255";
    if (data[6] != data.size() - head)
        return format("%d bytes announced, %zu sent", data[6], data.size() - head);
    if (data[6] > CHUNK_BYTES)
        return format("%d bytes in one chunk", data[6]);
    chunk.total = *total;
    chunk.offset = *offset;
    chunk.index = isIndexed(chunk.selector) ? data[CHUNK_HEAD] : 0;
    chunk.bytes.assign(data.begin() + static_cast<std::ptrdiff_t>(head), data.end());
    return "";
}

// Opens a new value at its first chunk. A value left half-sent was cut short by its client.
void beginValue(Desk& desk, const Chunk& chunk) {
    Session::Pending& pending = desk.session.pending[chunk.selector];
    if (!pending.damaged && pending.total != 0)
        object(
            desk, chunk.selector,
            format("a new value begins after %zu of %u bytes", pending.text.size(), pending.total));
    pending = {chunk.total, chunk.index, false, ""};
    desk.session.begun.insert(chunk.selector);
}

// What is wrong with the chunk's place in its value, or nothing.
std::string placeFlaw(const Chunk& chunk, const Session::Pending& pending) {
    const size_t have = pending.text.size();
    const size_t next = std::min(pending.total - have, CHUNK_BYTES);
    if (chunk.total == pending.total && chunk.index == pending.index && chunk.offset == have &&
        chunk.bytes.size() == next)
        return "";
    return format("%zu bytes at offset %u of %u, index %d, instead of %zu at %zu of %u, index %d",
                  chunk.bytes.size(), chunk.offset, chunk.total, chunk.index, next, have,
                  pending.total, pending.index);
}

// Places a chunk of good shape. Returns what does not add up, or nothing.
std::string placeChunk(Desk& desk, const Chunk& chunk, bool refused) {
    if (chunk.offset == 0)
        beginValue(desk, chunk);
    const auto found = desk.session.pending.find(chunk.selector);
    if (found == desk.session.pending.end()) {
        const bool known = desk.session.strict || desk.session.begun.count(chunk.selector) != 0;
        return known ? format("a chunk at offset %u without a beginning", chunk.offset) : "";
    }
    Session::Pending& pending = found->second;
    std::string flaw = placeFlaw(chunk, pending);
    if (!flaw.empty()) {
        desk.session.pending.erase(found);
        return flaw;
    }
    pending.damaged = pending.damaged || refused;
    pending.text += chunk.bytes;
    return "";
}

// The first upload of a clear is an empty OS name, the last an empty time stamp. What it finds
// half-done stays half-done, so lists begun before or meanwhile are not held to their counts.
void followClear(Session& session, const Value& value) {
    if (value.selector == FIRST_SELECTOR)
        session.clearing = value.text.empty();
    if (session.clearing)
        for (auto& list : session.lists)
            list.second.damaged = true;
    if (value.selector == SELECTOR_TIME && value.text.empty())
        session.clearing = false;
}

void takeCount(Desk& desk, const Value& value, bool refused) {
    const auto list = static_cast<uint8_t>(value.selector + 1);
    const auto count = value.text.size() != 2 ? std::nullopt
                                              : base255(static_cast<uint8_t>(value.text[0]),
                                                        static_cast<uint8_t>(value.text[1]));
    if (!count)
        object(desk, value.selector, "no two-byte count: " + escapeText(value.text));
    Session::Progress& progress = desk.session.lists[list];
    if (!progress.damaged && progress.received < progress.announced)
        object(desk, list,
               format("%zu of %zu items came before the next count", progress.received,
                      progress.announced));
    const size_t announced = count.value_or(0);
    const bool interrupted =
        desk.session.clearing || refused || (announced == 0 && progress.damaged);
    progress = {announced, 0, interrupted};
    desk.session.begun.insert(list);
    if (refused)
        return;
    Stored& stored = desk.parameters[list];
    stored = {stored.uploads, 0, {}, announced, desk.session.id, ""};
}

// A line longer than the agent's reader arrives in several items, and only the last one, the one
// with the line end, is counted.
bool endsItem(const Value& value) {
    return value.selector != 199 || (!value.text.empty() && value.text.back() == ';');
}

void storeItem(Desk& desk, const Value& value) {
    Stored& stored = desk.parameters[value.selector];
    const bool owner = stored.owner == desk.session.id || stored.owner == 0;
    const std::string text = owner ? stored.piece + value.text : value.text;
    if (owner)
        stored.piece = endsItem(value) ? "" : text.substr(0, 2 * MAX_VALUE);
    if (!endsItem(value))
        return;
    const std::string flaw = valueFlaw(value.selector, text);
    if (!flaw.empty())
        object(desk, value.selector, flaw + ": " + escapeText(text));
    if (owner && stored.texts.size() < stored.announced)
        stored.texts.push_back(text.substr(0, MAX_VALUE));
}

void takeItem(Desk& desk, const Value& value, bool refused) {
    const auto list = desk.session.lists.find(value.selector);
    if (list == desk.session.lists.end()) {
        if (desk.session.strict)
            object(desk, value.selector, "an item without its count");
    } else if (endsItem(value)) {
        Session::Progress& progress = list->second;
        progress.received++;
        if (progress.received == progress.announced + 1 && !progress.damaged)
            object(desk, value.selector,
                   format("more items than the %zu announced", progress.announced));
    }
    if (!refused)
        storeItem(desk, value);
}

void takeValue(Desk& desk, const Value& value, bool refused) {
    followClear(desk.session, value);
    if (isCount(value.selector))
        takeCount(desk, value, refused);
    else if (isList(value.selector))
        takeItem(desk, value, refused);
    if (refused)
        return;
    Stored& stored = desk.parameters[value.selector];
    stored.uploads++;
    if (isList(value.selector))
        return;
    const std::string flaw = valueFlaw(value.selector, value.text);
    if (!flaw.empty())
        object(desk, value.selector, flaw + ": " + escapeText(value.text));
    stored.index = value.index;
    stored.texts = {value.text.substr(0, MAX_VALUE)};
}

} // namespace

const Stored& storedUnder(const Parameters& parameters, uint32_t selector) {
    static const Stored nothing;
    const auto found = parameters.find(static_cast<uint8_t>(selector));
    return found == parameters.end() ? nothing : found->second;
}

ChunkResult setParameter(Parameters& parameters, Session& session, Ledger& ledger,
                         const Bytes& data, bool refused) {
    Desk desk = {parameters, session, ledger};
    if (data.empty())
        return {CC_LENGTH_INVALID, {}};
    if (data[0] < FIRST_SELECTOR || data[0] > LAST_SELECTOR) {
        if (data[0] > LAST_SELECTOR)
            complain(ledger, format("parameter %d does not exist", data[0]));
        return {CC_PARAMETER_UNSUPPORTED, {}};
    }
    Chunk chunk;
    std::string flaw = readChunk(data, chunk);
    if (!flaw.empty()) {
        object(desk, chunk.selector, flaw + ": " + hexText(data));
        return {CC_LENGTH_INVALID, {}};
    }
    flaw = placeChunk(desk, chunk, refused);
    if (!flaw.empty()) {
        object(desk, chunk.selector, flaw);
        return {CC_OUT_OF_RANGE, {}};
    }
    const auto found = session.pending.find(chunk.selector);
    if (found == session.pending.end() || found->second.text.size() < found->second.total)
        return {CC_OK, {}};
    const Session::Pending pending = found->second;
    session.pending.erase(found);
    const Value value = {chunk.selector, pending.index, pending.text};
    takeValue(desk, value, pending.damaged);
    return {CC_OK, pending.damaged ? std::nullopt : std::optional(value)};
}

} // namespace bmcsim
