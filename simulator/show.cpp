#include "show.h"

#include "records.h"
#include "show_storage.h"

namespace bmcsim {

static const std::string* valueOf(const Bmc& bmc, uint8_t selector) {
    const auto found = bmc.parameters.values.find(selector);
    return found == bmc.parameters.values.end() || found->second.text.empty() ? nullptr
                                                                              : &found->second.text;
}

static Lines labelled(const Bmc& bmc, uint8_t selector, const char* label) {
    const std::string* value = valueOf(bmc, selector);
    if (value == nullptr)
        return {};
    std::string text = *value;
    if (!text.empty() && text.back() == ';')
        text.pop_back();
    return {format("  %-10s ", label) + escapeText(text)};
}

static void append(Lines& lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
}

static const std::vector<std::string>& itemsOf(const Bmc& bmc, uint8_t selector) {
    static const std::vector<std::string> none;
    const auto found = bmc.parameters.lists.find(selector);
    return found == bmc.parameters.lists.end() ? none : found->second.items;
}

static Lines showOs(Bmc& bmc) {
    Lines lines = labelled(bmc, 192, "name");
    append(lines, labelled(bmc, 193, "version"));
    return lines;
}

static std::string startTimeText(const std::string& raw) {
    const Bytes bytes(raw.begin(), raw.end());
    if (bytes.size() == 4)
        return timeText(littleEndian(bytes, 0, 4)) + " (" + hexText(bytes) + ")";
    return bytes.empty() ? "unknown" : "cut short (" + hexText(bytes) + ")";
}

static Lines showAgent(Bmc& bmc) {
    const std::string* value = valueOf(bmc, 204);
    if (value == nullptr)
        return {};
    AgentInfo info;
    if (!parseAgentInfo(*value, info))
        return {"  unreadable: " + escapeText(*value)};
    static const char* const states[] = {"paused", "running", "stopped"};
    return {"  version    " + info.version + ", build " + info.build + ", protocol " +
                info.protocol,
            format("  state      %s (%d)", states[info.status], info.status),
            "  started    " + startTimeText(info.startTime)};
}

static Lines showTime(Bmc& bmc) {
    Lines lines;
    lines.push_back("  BMC clock  " + timeText(selTime(bmc.sel, bmc.ledger)));
    if (const std::string* value = valueOf(bmc, SELECTOR_TIME)) {
        const Bytes bytes(value->begin(), value->end());
        lines.push_back("  last cycle " + timeText(littleEndian(bytes, 0, 4)));
    }
    return lines;
}

static Lines showLan(Bmc& bmc) {
    std::vector<Row> rows;
    for (const std::string& item : itemsOf(bmc, 195)) {
        Row fields = splitText(escapeText(item), ";");
        fields.resize(12);
        rows.push_back({fields[0], fields[2], fields[11], fields[9], fields[1], fields[3],
                        fields[6], fields[4], fields[5], fields[8], fields[7], fields[10]});
    }
    return tableLines({"index", "name", "link", "Mbit/s", "MAC", "IPv4", "mask", "IPv6", "gateway",
                       "DNS", "host", "adapter"},
                      rows);
}

static Lines showCpu(Bmc& bmc) {
    return labelled(bmc, 196, "in use %");
}

static Lines showMemory(Bmc& bmc) {
    return labelled(bmc, 197, "in use %");
}

static Lines showNetwork(Bmc& bmc) {
    std::vector<Row> rows;
    for (const std::string& item : itemsOf(bmc, 201)) {
        Row fields = splitText(escapeText(item), ":;");
        fields.resize(7);
        rows.push_back(fields);
    }
    return tableLines({"name", "in use %", "link", "received", "errors", "sent", "errors"}, rows);
}

static Lines showStorage(Bmc& bmc) {
    return storageTables(itemsOf(bmc, 199));
}

static Lines showNvme(Bmc& bmc) {
    return nvmeTable(itemsOf(bmc, 206));
}

static Lines showLeds(Bmc& bmc) {
    std::vector<Row> rows;
    for (const auto& [position, bay] : bmc.panel.bays) {
        const char* led = bay.led < 0 ? "-" : bay.led == 0 ? "off" : "on";
        rows.push_back({std::to_string(position.aoc), std::to_string(position.group),
                        std::to_string(position.slot), led, std::to_string(bay.located),
                        escapeText(bay.serial)});
    }
    return tableLines({"aoc", "group", "slot", "LED", "switched", "serial"}, rows);
}

static Lines showWatchdog(Bmc& bmc) {
    tickWatchdog(bmc.watchdog, bmc.ledger);
    const Watchdog& watchdog = bmc.watchdog;
    if (!watchdog.answersNew && !watchdog.answersOld)
        return {"  not there"};
    std::string state = "stopped";
    if (watchdog.running)
        state = format("running, %lld of %d seconds left",
                       static_cast<long long>(secondsLeft(watchdog, bmc.ledger)), watchdog.period);
    else if (watchdog.expired > 0)
        state = "expired";
    return {"  state      " + state, format("  counts     enabled %zu, reset %zu, expired %zu",
                                            watchdog.enabled, watchdog.resets, watchdog.expired)};
}

static Lines showCommand(Bmc& bmc) {
    Lines lines = {format("  waiting    %zu, released %zu, idle polls %zu", bmc.slot.queue.size(),
                          bmc.slot.released, bmc.slot.idlePolls)};
    for (const std::string& line : bmc.slot.exchange)
        lines.push_back("  " + line);
    return lines;
}

static Lines showFiles(Bmc& bmc) {
    std::vector<Row> rows;
    for (const auto& [id, file] : bmc.files.offered)
        rows.push_back({format("%02X", id), std::to_string(file.content.size()),
                        std::to_string(file.prepared), std::to_string(file.reads),
                        std::to_string(file.done)});
    return tableLines({"file", "bytes", "prepared", "reads", "done"}, rows);
}

static Lines showBmc(Bmc& bmc) {
    return {format("  IPMI       %s", bmc.identity.ipmiVersion == 0x51 ? "1.5" : "2.0"),
            format("  up         %lld seconds, %llu restarts",
                   static_cast<long long>((bmc.ledger.nowMs - bmc.startMs) / 1000),
                   static_cast<unsigned long long>(bmc.generation - 1)),
            format("  agent has %s this start",
                   bmc.panel.restartClean != 0 ? "noticed" : "not noticed")};
}

static Lines showSel(Bmc& bmc) {
    return selLines(bmc);
}

static Lines showFaults(Bmc& bmc) {
    Lines lines;
    for (const Fault& fault : bmc.faults.faults)
        lines.push_back("  " + faultText(fault));
    for (const ScriptedAnswer& answer : bmc.faults.answers)
        lines.push_back("  " + targetText(answer.target) + " answer " + hexText(answer.bytes));
    if (bmc.faults.delayMs != 0)
        lines.push_back(format("  every answer after %d ms", bmc.faults.delayMs));
    return lines;
}

static Lines showComplaints(Bmc& bmc) {
    Lines lines;
    for (const std::string& complaint : bmc.ledger.complaints)
        lines.push_back("  " + complaint);
    const size_t kept = bmc.ledger.complaints.size();
    if (bmc.ledger.complaintCount > kept)
        lines.push_back(format("  and %zu more", bmc.ledger.complaintCount - kept));
    return lines;
}

struct Section {
    const char* name;
    const char* title;
    Lines (*lines)(Bmc&);
};

static const Section SECTIONS[] = {
    {"bmc", "BMC", showBmc},
    {"os", "Operating system", showOs},
    {"agent", "Agent", showAgent},
    {"time", "Time", showTime},
    {"lan", "Network interfaces", showLan},
    {"cpu", "CPU", showCpu},
    {"memory", "Memory", showMemory},
    {"network", "Network usage", showNetwork},
    {"storage", "Storage", showStorage},
    {"nvme", "NVMe", showNvme},
    {"leds", "Drive positions and LEDs", showLeds},
    {"watchdog", "Watchdog", showWatchdog},
    {"files", "Files for download", showFiles},
    {"command", "Command requests", showCommand},
    {"sel", "Event log", showSel},
    {"faults", "Faults ordered", showFaults},
    {"complaints", "Complaints", showComplaints},
};

Lines showSection(Bmc& bmc, const std::string& section, bool& known) {
    known = true;
    for (const Section& row : SECTIONS)
        if (section == row.name)
            return row.lines(bmc);
    known = false;
    return {};
}

Lines showAll(Bmc& bmc) {
    Lines lines;
    for (const Section& row : SECTIONS) {
        const Lines section = row.lines(bmc);
        if (section.empty())
            continue;
        lines.push_back(row.title);
        append(lines, section);
    }
    return lines;
}

std::string sectionNames() {
    std::string names;
    for (const Section& row : SECTIONS)
        names += (names.empty() ? "" : " ") + std::string(row.name);
    return names;
}

Lines rawValues(const Bmc& bmc, uint8_t selector) {
    Lines lines;
    if (countOfList(selector) != 0) {
        for (const std::string& item : itemsOf(bmc, selector))
            lines.push_back(escapeText(item));
        return lines;
    }
    const auto found = bmc.parameters.values.find(selector);
    if (found == bmc.parameters.values.end())
        return lines;
    const bool indexed = selector == SELECTOR_COMMAND || selector == SELECTOR_RESULT;
    lines.push_back((indexed ? format("%d ", found->second.index) : "") +
                    escapeText(found->second.text));
    return lines;
}

Lines selLines(const Bmc& bmc) {
    Lines lines;
    for (const SelRecord& record : bmc.sel.records)
        lines.push_back(selWords(record));
    return lines;
}

Lines trafficLines(const Bmc& bmc) {
    std::vector<Row> rows;
    Traffic all;
    const auto row = [](const std::string& name, const Traffic& traffic) {
        return Row{name,
                   std::to_string(traffic.requests),
                   std::to_string(traffic.failed),
                   std::to_string(traffic.bytesIn),
                   std::to_string(traffic.bytesOut),
                   std::to_string(traffic.values),
                   std::to_string(traffic.needed)};
    };
    for (const auto& [key, traffic] : bmc.traffic) {
        const std::string command = format("%02X/%02X", key.netFn, key.cmd);
        rows.push_back(
            row(key.selector < 0 ? command : command + format("/%d", key.selector), traffic));
        all.requests += traffic.requests;
        all.failed += traffic.failed;
        all.bytesIn += traffic.bytesIn;
        all.bytesOut += traffic.bytesOut;
        all.values += traffic.values;
        all.needed += traffic.needed;
    }
    rows.push_back(row("all", all));
    return tableLines({"command", "requests", "failed", "in", "out", "values", "needed"}, rows);
}

} // namespace bmcsim
