#include "show.h"

#include "records.h"

#include <algorithm>

namespace bmcsim {

namespace {

// The heading first, then the rows, cells separated by ";": columns as wide as their widest cell,
// two blanks between them. Nothing when there is no row.
Lines tableLines(const Lines& rows) {
    std::vector<size_t> widths;
    for (const std::string& row : rows) {
        const Lines cells = splitText(row, ";");
        widths.resize(std::max(widths.size(), cells.size()));
        for (size_t i = 0; i < cells.size(); i++)
            widths[i] = std::max(widths[i], cells[i].size());
    }
    Lines lines;
    for (const std::string& row : rows) {
        const Lines cells = splitText(row, ";");
        std::string line;
        for (size_t i = 0; i < cells.size(); i++)
            line += "  " + cells[i] + std::string(widths[i] - cells[i].size(), ' ');
        lines.push_back(line.substr(0, line.find_last_not_of(' ') + 1));
    }
    return lines.size() > 1 ? lines : Lines();
}

Lines indented(Lines lines) {
    for (std::string& line : lines)
        line.insert(0, "  ");
    return lines;
}

void append(Lines& lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
}

// The last value of a selector, empty when there is none.
std::string valueOf(const Bmc& bmc, uint8_t selector) {
    const Lines& texts = storedUnder(bmc.parameters, selector).texts;
    return texts.empty() ? "" : texts.back();
}

Lines labelled(const Bmc& bmc, uint8_t selector, const char* label) {
    std::string text = valueOf(bmc, selector);
    if (text.empty())
        return {};
    if (text.back() == ';')
        text.pop_back();
    return {format("  %-10s ", label) + escapeText(text)};
}

// ---- sections ----

Lines showBmc(Bmc& bmc) {
    return {format("  up         %lld seconds, %llu restarts",
                   static_cast<long long>((bmc.ledger.nowMs - bmc.startMs) / 1000),
                   static_cast<unsigned long long>(bmc.generation - 1)),
            format("  agent has %s this start",
                   bmc.panel.restartClean != 0 ? "noticed" : "not noticed")};
}

Lines showOs(Bmc& bmc) {
    Lines lines = labelled(bmc, 192, "name");
    append(lines, labelled(bmc, 193, "version"));
    return lines;
}

Lines showAgent(Bmc& bmc) {
    static const char* const states[] = {"paused", "running", "stopped"};
    const std::string value = valueOf(bmc, SELECTOR_AGENT);
    const auto fields = agentFields(value);
    if (!fields)
        return value.empty() ? Lines() : Lines{"  unreadable: " + escapeText(value)};
    const Lines& parts = *fields;
    const Bytes start(parts[4].begin(), parts[4].end());
    const std::string time = start.size() == 4 ? timeText(littleEndian(start, 0, 4)) : "unknown";
    return {"  version    " + parts[0] + ", build " + parts[1] + ", protocol " + parts[2],
            format("  state      %s (%s)", states[parts[3][0] - '0'], parts[3].c_str()),
            "  started    " + time + " (" + hexText(start) + ")"};
}

Lines showTime(Bmc& bmc) {
    Lines lines = {"  BMC clock  " + timeText(selTime(bmc.sel, bmc.ledger))};
    const std::string value = valueOf(bmc, SELECTOR_TIME);
    if (!value.empty())
        lines.push_back("  last cycle " +
                        timeText(littleEndian(Bytes(value.begin(), value.end()), 0, 4)));
    return lines;
}

// One table for each kind of record under a selector, then the items that are of none.
template <uint8_t SELECTOR>
Lines showRecords(Bmc& bmc) {
    Lines lines;
    Lines rest = storedUnder(bmc.parameters, SELECTOR).texts;
    for (const RecordKind& kind : kindsOf(SELECTOR)) {
        Lines rows = {kind.columns};
        Lines others;
        for (const std::string& item : rest) {
            const auto values = readRecord(kind, item);
            if (values)
                rows.push_back(escapeText(inColumns(kind, *values)));
            else
                others.push_back(item);
        }
        if (rows.size() > 1 && *kind.title != '\0')
            lines.push_back(std::string("  ") + kind.title);
        append(lines, *kind.title == '\0' ? tableLines(rows) : indented(tableLines(rows)));
        rest = others;
    }
    for (const std::string& item : rest)
        lines.push_back("  unreadable: " + escapeText(item));
    return lines;
}

Lines showLeds(Bmc& bmc) {
    static const char* const states[] = {"-", "off", "on"};
    Lines rows = {"aoc;group;slot;LED;switched;serial"};
    for (const auto& [position, bay] : bmc.panel.bays) {
        const auto& [aoc, group, slot] = position;
        rows.push_back(
            format("%u;%u;%u;%s;%zu;", aoc, group, slot, states[bay.led + 1], bay.located) +
            escapeText(bay.serial));
    }
    return tableLines(rows);
}

Lines showWatchdog(Bmc& bmc) {
    Watchdog& watchdog = bmc.watchdog;
    const auto left = static_cast<long long>(tickWatchdog(watchdog, bmc.ledger));
    if (!watchdog.answersNew && !watchdog.answersOld)
        return {"  not there"};
    return {"  state      " +
                (watchdog.running
                     ? format("running, %lld of %d seconds left", left, watchdog.period)
                     : std::string(watchdog.expired > 0 ? "expired" : "stopped")),
            format("  counts     enabled %zu, reset %zu, expired %zu", watchdog.enabled,
                   watchdog.resets, watchdog.expired)};
}

Lines showFiles(Bmc& bmc) {
    Lines rows = {"file;bytes;prepared;reads;done"};
    for (const auto& [id, file] : bmc.files.offered)
        rows.push_back(format("%02X;%zu;%zu;%zu;%zu", id, file.content.size(), file.prepared,
                              file.reads, file.done));
    return tableLines(rows);
}

Lines showCommand(Bmc& bmc) {
    Lines lines = {format("  waiting    %zu, released %zu, idle polls %zu", bmc.slot.queue.size(),
                          bmc.slot.released, bmc.slot.idlePolls)};
    for (const std::string& line : bmc.slot.exchange)
        lines.push_back("  " + line);
    return lines;
}

Lines showFaults(Bmc& bmc) {
    Lines lines;
    for (const Fault& fault : bmc.faults.orders)
        lines.push_back("  " + faultText(fault));
    if (bmc.faults.delayMs != 0)
        lines.push_back(format("  every answer after %u ms", bmc.faults.delayMs));
    return lines;
}

Lines showComplaints(Bmc& bmc) {
    return indented(bmc.ledger.complaints);
}

struct Section {
    const char* name;
    const char* title;
    Lines (*lines)(Bmc&);
};

constexpr Section SECTIONS[] = {
    {"bmc", "BMC", showBmc},
    {"os", "Operating system", showOs},
    {"agent", "Agent", showAgent},
    {"time", "Time", showTime},
    {"lan", "Network interfaces", showRecords<SELECTOR_LAN>},
    {"cpu", "CPU", [](Bmc& bmc) { return labelled(bmc, 196, "in use %"); }},
    {"memory", "Memory", [](Bmc& bmc) { return labelled(bmc, 197, "in use %"); }},
    {"network", "Network usage", showRecords<SELECTOR_USAGE>},
    {"storage", "Storage", showRecords<SELECTOR_STORAGE>},
    {"nvme", "NVMe", showRecords<SELECTOR_NVME>},
    {"leds", "Drive positions and LEDs", showLeds},
    {"watchdog", "Watchdog", showWatchdog},
    {"files", "Files for download", showFiles},
    {"command", "Command requests", showCommand},
    {"sel", "Event log", selLines},
    {"faults", "Faults ordered", showFaults},
    {"complaints", "Complaints", showComplaints},
};

} // namespace

Lines showSection(Bmc& bmc, const std::string& section) {
    for (const Section& row : SECTIONS)
        if (section == row.name)
            return row.lines(bmc);
    return {};
}

Lines showAll(Bmc& bmc) {
    Lines lines;
    for (const Section& row : SECTIONS) {
        const Lines section = row.lines(bmc);
        if (section.empty())
            continue;
        lines.emplace_back(row.title);
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

Lines rawValues(const Bmc& bmc, uint32_t selector) {
    const Stored& stored = storedUnder(bmc.parameters, selector);
    const bool indexed = isIndexed(static_cast<uint8_t>(selector));
    Lines lines;
    for (const std::string& text : stored.texts)
        lines.push_back((indexed ? format("%d ", stored.index) : "") + escapeText(text));
    return lines;
}

Lines selLines(Bmc& bmc) {
    Lines lines;
    for (const SelRecord& record : bmc.sel.records)
        lines.push_back(selWords(record));
    return lines;
}

Lines trafficLines(const Bmc& bmc) {
    Lines rows = {"command;requests;failed;in;out;values;needed"};
    Traffic all;
    const auto add = [&](const std::string& name, const Traffic& some) {
        rows.push_back(name + format(";%zu;%zu;%zu;%zu;%zu;%zu", some.requests, some.failed,
                                     some.bytesIn, some.bytesOut, some.values, some.needed));
        all.requests += some.requests;
        all.failed += some.failed;
        all.bytesIn += some.bytesIn;
        all.bytesOut += some.bytesOut;
        all.values += some.values;
        all.needed += some.needed;
    };
    for (const auto& [key, traffic] : bmc.traffic) {
        const auto& [netFn, cmd, selector] = key;
        const std::string of = selector < 0 ? "" : format("/%d", selector);
        add(format("%02X/%02X", netFn, cmd) + of, traffic);
    }
    add("all", Traffic(all));
    return tableLines(rows);
}

} // namespace bmcsim
