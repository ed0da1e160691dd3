#include "records.h"

#include <algorithm>
#include <regex>

namespace bmcsim {

constexpr size_t RECORD_CUT = 511;      // LAN and storage records are cut here
constexpr size_t NVME_RECORD_CUT = 254; // NVMe records here

uint8_t listOfCount(uint8_t selector) {
    const bool counts = selector == 194 || selector == 198 || selector == 200 || selector == 205;
    return counts ? static_cast<uint8_t>(selector + 1) : 0;
}

uint8_t countOfList(uint8_t selector) {
    const auto before = static_cast<uint8_t>(selector - 1);
    return listOfCount(before) != 0 ? before : 0;
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

static const std::vector<RecordKind>& storageKinds() {
    static const std::vector<RecordKind> kinds = {
        {"HD",
         ";:::;;;;;;;;;;;;;",
         {"tag", "device", "health", "serial", "firmware", "index", "type", "rpm", "controller",
          "model", "GiB", "cylinders", "sectors", "tracks", "heads", "interface", "temperature"}},
        {"HD", ";:::;;", {"tag", "device", "health", "serial", "firmware", "index"}},
        {"PT",
         ";::::::;",
         {"tag", "device", "percent", "used", "available", "total", "block size", ""}},
        {"LSI", ";::::;", {"tag", "device", "health", "serial", "firmware", "slot"}},
        {"LSI", ";:::;", {"tag", "DID", "health", "serial", "firmware"}},
        {"BRCM_IR_CNTL",
         ";;;;;;;",
         {"tag", "mapping", "number", "type", "BIOS", "firmware", "channel"}},
        {"BRCM_II_CNTL",
         ";;;;;;;",
         {"tag", "mapping", "number", "type", "BIOS", "firmware", "channel"}},
        {"BRCM_IR_VD",
         ";;;;;;;;",
         {"tag", "mapping", "name", "health", "detail", "level", "size", "members"}},
        {"BRCM_IR_PD",
         ";;::::;;;;;;",
         {"tag", "mapping", "name", "health", "state", "serial", "firmware", "location", "type", "",
          "model", "size"}},
        {"BRCM_IT_PD",
         ";;::::;;;;;;",
         {"tag", "mapping", "name", "health", "state", "serial", "firmware", "location", "type", "",
          "model", "size"}},
        {"Logical",
         ";;;;;;;;",
         {"tag", "name", "state", "vendor", "disks", "level", "members", "volume"}},
    };
    return kinds;
}

// The member indexes of a Logical record are joined by ":"; they count as one field.
static bool joinsMembers(const std::string& text) {
    return text.rfind("Logical;", 0) == 0;
}

static std::string separatorsOf(const std::string& text) {
    std::string separators;
    for (const char character : text)
        if (character == ';' || (character == ':' && !joinsMembers(text)))
            separators += character;
    return separators;
}

const RecordKind* storageKind(const std::string& text) {
    const std::string tag = splitText(text, ";:").front();
    const std::string separators = separatorsOf(text);
    for (const RecordKind& kind : storageKinds())
        if (tag == kind.tag && separators == kind.separators && text.back() == ';')
            return &kind;
    return nullptr;
}

std::vector<std::string> storageFields(const std::string& text) {
    std::vector<std::string> fields = splitText(text, joinsMembers(text) ? ";" : ";:");
    if (fields.size() > 1 && fields.back().empty())
        fields.pop_back();
    return fields;
}

static bool oneOf(const std::string& text, const std::vector<const char*>& allowed) {
    return std::find(allowed.begin(), allowed.end(), text) != allowed.end();
}

static bool healthKnown(const RecordKind& kind, const std::string& health) {
    const std::string tag = kind.tag;
    if (oneOf(health, {"OK", "PredictiveFailureAnalysis", "Fail", "N/A"}))
        return true;
    if (tag == "BRCM_IR_VD")
        return health == "Miss";
    return tag.find("_PD") != std::string::npos && oneOf(health, {"Missing", "Standby"});
}

static bool fieldFits(const RecordKind& kind, const std::string& name, const std::string& field) {
    static const std::regex location("C[0-9]+E.*S[0-9]+");
    const std::string tag = kind.tag;
    if (name == "health")
        return healthKnown(kind, field);
    if (name == "device")
        return field.rfind("/dev/", 0) == 0;
    if (name == "location")
        return std::regex_match(field, location);
    if (name == "interface")
        return oneOf(field, {"USB", "SCSI", "IDE", "N/A"});
    if (name == "type" && tag == "HD")
        return oneOf(field, {"USB", "SSD", "HDD"});
    if (name == "vendor")
        return field == "Intel RSTe";
    return true;
}

static std::string storageFlaw(const std::string& text) {
    if (text.empty())
        return "empty storage record";
    if (text.size() >= RECORD_CUT)
        return "";
    const RecordKind* kind = storageKind(text);
    if (kind == nullptr)
        return "no storage record by its tag and separators";
    const std::vector<std::string> fields = storageFields(text);
    for (size_t i = 0; i < fields.size(); i++) {
        if (fields[i].empty())
            return format("field %zu is empty", i);
        if (!fieldFits(*kind, kind->names[i], fields[i]))
            return format("field %zu (%s) is \"%s\"", i, kind->names[i], fields[i].c_str());
    }
    return "";
}

static std::string patternFlaw(const std::string& text, const std::regex& pattern,
                               const char* expected) {
    return std::regex_match(text, pattern) ? "" : std::string("is not ") + expected;
}

static std::string lanFlaw(const std::string& text) {
    static const std::regex mac("N/A|([0-9a-f]{2}:){5}[0-9a-f]{2}");
    static const std::regex number("[0-9]+");
    if (text.size() >= RECORD_CUT)
        return "";
    const std::vector<std::string> fields = splitText(text, ";");
    if (fields.size() != 13 || !fields.back().empty())
        return format("has %zu fields instead of 12", fields.size() - 1);
    for (size_t i = 0; i < 12; i++)
        if (fields[i].empty())
            return format("field %zu is empty", i);
    if (!std::regex_match(fields[0], number) || !std::regex_match(fields[9], number))
        return "index or speed is no number";
    if (!std::regex_match(fields[1], mac))
        return "field 1 is no MAC address";
    return oneOf(fields[11], {"up", "down"}) ? "" : "link is neither up nor down";
}

static std::string nvmeFlaw(const std::string& text) {
    const std::vector<std::string> fields = splitText(text, ";");
    const bool cut = text.size() >= NVME_RECORD_CUT;
    if (!cut && (fields.size() != 20 || !fields.back().empty()))
        return format("has %zu fields instead of 19", fields.size() - 1);
    for (size_t i = 0; i + 1 < fields.size() && i < 19; i++) {
        const std::string label = format("%02zu:", i);
        if (fields[i].rfind(label, 0) != 0)
            return format("field %zu does not begin with %s", i, label.c_str());
        if (fields[i].size() == label.size())
            return format("field %zu is empty", i);
    }
    return "";
}

bool parseAgentInfo(const std::string& text, AgentInfo& info) {
    static const std::regex shape("([^;]+);([^;]+);([^;]+);([0-9]+);([\\s\\S]{0,4});");
    std::smatch parts;
    if (!std::regex_match(text, parts, shape))
        return false;
    info.version = parts[1];
    info.build = parts[2];
    info.protocol = parts[3];
    int64_t status = 0;
    if (!parseNumber(parts[4].str(), 0, 2, status))
        return false;
    info.status = static_cast<int>(status);
    info.startTime = parts[5];
    return true;
}

static std::string usageFlaw(const std::string& text) {
    static const std::regex up("[^:;]+:([0-9]+\\.[0-9]{2}|<1|unknown media type):up;([0-9]+;){4}");
    static const std::regex down("[^:;]+:0:down;0;0;0;0;");
    return std::regex_match(text, up) || std::regex_match(text, down) ? "" : "is no usage record";
}

static std::string fixedValueFlaw(uint8_t selector, const std::string& text) {
    static const std::regex osText("n/a|[^;]+;");
    static const std::regex cpu("[0-9]{1,4}\\.[0-9]{2};");
    static const std::regex memory("-?[0-9]{1,9};");
    AgentInfo info;
    switch (selector) {
    case 192:
    case 193:
        return patternFlaw(text, osText, "a text that ends with \";\"");
    case 196:
        return patternFlaw(text, cpu, "a percentage with two decimals");
    case 197:
        return patternFlaw(text, memory, "a whole percentage");
    case SELECTOR_TIME:
        return text.size() == 4 ? "" : "is not 4 bytes";
    case 203:
        return "has no use but to be cleared";
    case 204:
        return parseAgentInfo(text, info) ? "" : "is no agent information";
    default:
        return "";
    }
}

std::string valueFlaw(uint8_t selector, const std::string& text) {
    if (text.size() > MAX_VALUE) // also keeps the patterns below away from endless texts
        return format("is %zu bytes long", text.size());
    switch (selector) {
    case 195:
        return lanFlaw(text);
    case 199:
        return storageFlaw(text);
    case 201:
        return usageFlaw(text);
    case 206:
        return nvmeFlaw(text);
    default:
        return text.empty() ? "" : fixedValueFlaw(selector, text);
    }
}

} // namespace bmcsim
