// The grammar of the uploaded texts: which selector carries what, and whether a text is that.
#pragma once

#include "core.h"

namespace bmcsim {

constexpr uint8_t FIRST_SELECTOR = 192;
constexpr uint8_t SELECTOR_LAN = 195;
constexpr uint8_t SELECTOR_STORAGE = 199;
constexpr uint8_t SELECTOR_USAGE = 201;
constexpr uint8_t SELECTOR_TIME = 202;
constexpr uint8_t SELECTOR_AGENT = 204;
constexpr uint8_t SELECTOR_NVME = 206;
constexpr uint8_t SELECTOR_COMMAND = 207;
constexpr uint8_t SELECTOR_RESULT = 208;
constexpr uint8_t LAST_SELECTOR = SELECTOR_RESULT;
constexpr size_t MAX_VALUE = 1023; // no value of the agent is longer

// Whether the selector carries a count, which announces that many items under the next selector;
// and whether it carries such items.
bool isCount(uint8_t selector);
bool isList(uint8_t selector);
// Whether its values come with an index.
bool isIndexed(uint8_t selector);
const char* selectorName(uint8_t selector);

// One kind of record. `form` is such a record with the fields' names in place of their values; what
// stands before a "=" is the same in every one.
struct RecordKind {
    uint8_t selector;
    const char* separators;
    const char* title; // above a table of such records, if it needs one
    const char* form;
    const char* columns; // of that table, separated by ";"
};
std::vector<RecordKind> kindsOf(uint8_t selector);
// The values of a record, in the order of the form; nothing when it is of another kind.
std::optional<Lines> readRecord(const RecordKind& kind, const std::string& text);
// The same in the order of the table's columns, and joined like these.
std::string inColumns(const RecordKind& kind, const Lines& values);

// The parts of agent information: version, build, protocol, status (0 to 2), start time, which is
// up to four raw bytes that may be ";" themselves. Nothing when the text is not that.
std::optional<Lines> agentFields(const std::string& text);

// Empty when the value fits its selector, else the reason. Cleared (empty) values fit wherever
// the selector may be cleared. Lists are checked item by item.
std::string valueFlaw(uint8_t selector, const std::string& text);

} // namespace bmcsim
