#include "records.h"

#include <algorithm>
#include <map>
#include <regex>

namespace bmcsim {

namespace {

constexpr size_t RECORD_CUT = 511;      // LAN and storage records are cut here
constexpr size_t NVME_RECORD_CUT = 254; // NVMe records here

bool matches(const std::string& text, const char* pattern) {
    thread_local std::map<std::string, std::regex> compiled;
    return std::regex_match(text, compiled.try_emplace(pattern, pattern).first->second);
}

constexpr const char* AGENT = "([^;]+);([^;]+);([^;]+);([0-2]);([\\s\\S]{0,4});";

// The selectors whose texts are of one pattern.
struct Shape {
    uint8_t selector;
    const char* pattern;
    const char* flaw;
};
constexpr Shape SHAPES[] = {
    {192, "n/a|[^;]+;", "is not a text that ends with \";\""},
    {193, "n/a|[^;]+;", "is not a text that ends with \";\""},
    {196, "[0-9]{1,4}\\.[0-9]{2};", "is not a percentage with two decimals"},
    {197, "-?[0-9]{1,9};", "is not a whole percentage"},
    {SELECTOR_USAGE,
     "[^:;]+:(0:down;0;0;0;0;|([0-9]+\\.[0-9]{2}|<1|unknown media type):up;([0-9]+;){4})",
     "is no usage record"},
    {SELECTOR_TIME, "[\\s\\S]{4}", "is not 4 bytes"},
    {203, "", "has no use but to be cleared"},
    {SELECTOR_AGENT, AGENT, "is no agent information"},
};

constexpr RecordKind RECORD_KINDS[] = {
    {SELECTOR_LAN, ";", "", "index;MAC;name;IPv4;IPv6;gateway;mask;host;DNS;Mbit/s;adapter;link;",
     "index;name;link;Mbit/s;MAC;IPv4;mask;IPv6;gateway;DNS;host;adapter"},
    {SELECTOR_USAGE, ":;", "", "name:in use %:link;received;errors in;sent;errors out;",
     "name;in use %;link;received;errors in;sent;errors out"},
    {SELECTOR_STORAGE, ":;", "Disks",
     "HD=;device:health:serial:firmware;index;type;rpm;controller;model;GiB;"
     "cylinders;sectors;tracks;heads;interface;temperature;",
     "device;health;index;type;GiB;model;serial;firmware;interface;temperature;rpm;controller"},
    {SELECTOR_STORAGE, ":;", "Disks of volumes", "HD=;device:health:serial:firmware;index;",
     "device;health;index;serial;firmware"},
    {SELECTOR_STORAGE, ":;", "Partitions",
     "PT=;device:percent:used:available:total:block size:end;",
     "device;percent;used;available;total;block size"},
    {SELECTOR_STORAGE, ":;", "MegaRAID disks", "LSI=;device:health:serial:firmware:slot;",
     "device;health;slot;serial;firmware"},
    {SELECTOR_STORAGE, ":;", "MegaRAID drives", "LSI=;DID:health:serial:firmware;",
     "DID;health;serial;firmware"},
    {SELECTOR_STORAGE, ";", "RSTe volumes",
     "Logical=;name;state;vendor;disks;level;members;volume;",
     "volume;name;state;level;disks;members"},
    {SELECTOR_STORAGE, ":;", "IR controllers",
     "BRCM_IR_CNTL=;mapping;number;type;BIOS;firmware;channel;",
     "mapping;number;type;BIOS;firmware;channel"},
    {SELECTOR_STORAGE, ":;", "IT controllers",
     "BRCM_II_CNTL=;mapping;number;type;BIOS;firmware;channel;",
     "mapping;number;type;BIOS;firmware;channel"},
    {SELECTOR_STORAGE, ":;", "Volumes",
     "BRCM_IR_VD=;mapping;name;health;detail;level;size;members;",
     "mapping;name;health;detail;level;size;members"},
    {SELECTOR_STORAGE, ":;", "IR drives",
     "BRCM_IR_PD=;mapping;name:health:state:serial:firmware;location;type;rpm;model;size;",
     "location;health;state;type;size;model;serial;firmware"},
    {SELECTOR_STORAGE, ":;", "IT drives",
     "BRCM_IT_PD=;mapping;name:health:state:serial:firmware;location;type;rpm;model;size;",
     "location;health;state;type;size;model;serial;firmware"},
    {SELECTOR_NVME, ";", "",
     "00:=device;01:=warning;02:=temperature;03:=spare;04:=threshold;05:=used;06:=units read;"
     "07:=units written;08:=reads;09:=writes;10:=busy;11:=power cycles;12:=hours;13:=unsafe;"
     "14:=media errors;15:=log entries;16:=model;17:=KiB;18:=serial;",
     "device;warning;temperature;spare;threshold;used;hours;power cycles;media errors;"
     "log entries;KiB;model;serial"},
};

// What some fields of records must look like. The first row of that title and name counts.
struct FieldShape {
    const char* title; // of the kind, empty for any
    const char* name;
    const char* pattern;
};
constexpr FieldShape FIELD_SHAPES[] = {
    {"Volumes", "health", "OK|PredictiveFailureAnalysis|Fail|N/A|Miss"},
    {"IR drives", "health", "OK|PredictiveFailureAnalysis|Fail|N/A|Missing|Standby"},
    {"IT drives", "health", "OK|PredictiveFailureAnalysis|Fail|N/A|Missing|Standby"},
    {"Disks", "type", "USB|SSD|HDD"},
    {"", "health", "OK|PredictiveFailureAnalysis|Fail|N/A"},
    {"", "device", "/dev/.*|nvme[0-9]+"},
    {"", "location", "C[0-9]+E.*S[0-9]+"},
    {"", "interface", "USB|SCSI|IDE|N/A"},
    {"", "vendor", "Intel RSTe"},
    {"", "MAC", "N/A|([0-9a-f]{2}:){5}[0-9a-f]{2}"},
    {"", "index", "[0-9]+|N/A"},
    {"", "Mbit/s", "[0-9]+"},
    {"", "link", "up|down"},
};

Lines fieldNames(const RecordKind& kind) {
    Lines names = splitText(kind.form, kind.separators);
    names.pop_back(); // behind the last separator
    for (std::string& name : names)
        name.erase(0, name.find('=') + 1);
    return names;
}

bool fieldFits(const std::string& title, const std::string& name, const std::string& value) {
    for (const FieldShape& shape : FIELD_SHAPES)
        if (name == shape.name && (*shape.title == '\0' || title == shape.title))
            return matches(value, shape.pattern);
    return !value.empty() || name.empty();
}

std::string recordFlaw(uint8_t selector, const std::string& text) {
    for (const RecordKind& kind : kindsOf(selector)) {
        const auto values = readRecord(kind, text);
        if (!values)
            continue;
        const Lines names = fieldNames(kind);
        for (size_t i = 0; i < names.size(); i++)
            if (!fieldFits(kind.title, names[i], values->at(i)))
                return format("field %zu (%s) is \"%s\"", i, names[i].c_str(),
                              values->at(i).c_str());
        return "";
    }
    return "is no record by its tag and separators";
}

// The separators in a text, in order.
std::string separatorsIn(const std::string& text, const std::string& separators) {
    std::string found;
    for (const char character : text)
        if (separators.find(character) != std::string::npos)
            found += character;
    return found;
}

} // namespace

bool isCount(uint8_t selector) {
    return selector == 194 || selector == 198 || selector == 200 || selector == 205;
}

bool isList(uint8_t selector) {
    return isCount(static_cast<uint8_t>(selector - 1));
}

bool isIndexed(uint8_t selector) {
    return selector == SELECTOR_COMMAND || selector == SELECTOR_RESULT;
}

const char* selectorName(uint8_t selector) {
    static const char* const names[] = {
        "OS name",        "OS version",    "LAN count",         "LAN records", "CPU usage",
        "memory usage",   "storage count", "storage records",   "usage count", "usage records",
        "time stamp",     "reserved",      "agent information", "NVMe count",  "NVMe records",
        "command status", "command result"};
    return selector >= FIRST_SELECTOR && selector <= LAST_SELECTOR
               ? names[selector - FIRST_SELECTOR]
               : "unknown";
}

std::vector<RecordKind> kindsOf(uint8_t selector) {
    std::vector<RecordKind> kinds;
    for (const RecordKind& kind : RECORD_KINDS)
        if (kind.selector == selector)
            kinds.push_back(kind);
    return kinds;
}

std::optional<Lines> readRecord(const RecordKind& kind, const std::string& text) {
    if (separatorsIn(text, kind.separators) != separatorsIn(kind.form, kind.separators))
        return {};
    const Lines form = splitText(kind.form, kind.separators);
    Lines values = splitText(text, kind.separators);
    for (size_t i = 0; i < form.size(); i++) {
        const size_t fixed = form[i].find('=');
        if (fixed == std::string::npos)
            continue;
        const size_t compared = fixed + 1 == form[i].size() ? std::string::npos : fixed;
        if (values[i].compare(0, compared, form[i], 0, fixed) != 0)
            return {};
        values[i].erase(0, fixed);
    }
    return values.back().empty() ? std::optional(values) : std::nullopt;
}

std::string inColumns(const RecordKind& kind, const Lines& values) {
    const Lines names = fieldNames(kind);
    std::string joined;
    for (const std::string& column : splitText(kind.columns, ";")) {
        const auto at = std::find(names.begin(), names.end(), column) - names.begin();
        joined += values.at(static_cast<size_t>(at)) + ";";
    }
    return joined.substr(0, joined.size() - 1);
}

std::optional<Lines> agentFields(const std::string& text) {
    std::smatch parts;
    if (!std::regex_match(text, parts, std::regex(AGENT)))
        return {};
    return Lines(parts.begin() + 1, parts.end());
}

std::string valueFlaw(uint8_t selector, const std::string& text) {
    if (text.size() > MAX_VALUE) // also keeps the patterns away from endless texts
        return format("is %zu bytes long", text.size());
    if (text.empty() && !isList(selector))
        return "";
    for (const Shape& shape : SHAPES)
        if (shape.selector == selector)
            return matches(text, shape.pattern) ? "" : shape.flaw;
    const bool cut = text.size() >= (selector == SELECTOR_NVME ? NVME_RECORD_CUT : RECORD_CUT);
    return isList(selector) && !cut ? recordFlaw(selector, text) : "";
}

} // namespace bmcsim
