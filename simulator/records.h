// The grammar of the uploaded texts: which selector carries what, and whether a text is that.
#pragma once

#include "core.h"

namespace bmcsim {

constexpr uint8_t FIRST_SELECTOR = 192;
constexpr uint8_t LAST_SELECTOR = 208;
constexpr size_t MAX_VALUE = 1023; // no value of the agent is longer
constexpr uint8_t SELECTOR_TIME = 202;
constexpr uint8_t SELECTOR_COMMAND = 207;
constexpr uint8_t SELECTOR_RESULT = 208;

// The list selector a count selector announces (194 -> 195 ...), 0 when it announces none; and
// the other way round.
uint8_t listOfCount(uint8_t selector);
uint8_t countOfList(uint8_t selector);
const char* selectorName(uint8_t selector);

// One kind of storage record. Fields are separated by ";" or ":" exactly as `separators` says; the
// last separator ends the record. `names` are the fields' headings, in order, tag first.
struct RecordKind {
    const char* tag;
    const char* separators;
    std::vector<const char*> names;
};

// The kind a storage record is by its tag and separators; nullptr when there is none.
const RecordKind* storageKind(const std::string& text);
// Fields of a storage record, tag first, without the empty piece after the last ";". The member
// indexes of a Logical record are one field.
std::vector<std::string> storageFields(const std::string& text);

// Agent information: version;build;protocol;status;start time; where the start time is up to
// four raw bytes, which may be ";" themselves. False when the text is not that.
struct AgentInfo {
    std::string version, build, protocol, startTime;
    int status = 0;
};
bool parseAgentInfo(const std::string& text, AgentInfo& info);

// Empty when the value fits its selector, else the reason. Cleared (empty) values fit wherever
// the selector may be cleared. Lists are checked item by item.
std::string valueFlaw(uint8_t selector, const std::string& text);

} // namespace bmcsim
