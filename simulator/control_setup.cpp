#include "control_setup.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

namespace bmcsim {

static bool numberAt(const CommandLine& line, size_t at, int64_t low, int64_t high, int64_t& out) {
    return at < line.words.size() && parseNumber(line.words[at], low, high, out);
}

// A command of one number from 0 to `high`.
static std::string takeNumber(const CommandLine& line, int64_t high, const char* usage,
                              const std::function<void(int64_t)>& store) {
    int64_t number = 0;
    if (!numberAt(line, 0, 0, high, number))
        return usage;
    store(number);
    return "";
}

// The text from the second word on.
static std::string afterFirstWord(const CommandLine& line) {
    const size_t blank = line.rest.find_first_of(" \t");
    return blank == std::string::npos ? "" : line.rest.substr(blank + 1);
}

std::string setupPost(Bmc& bmc, const CommandLine& line) {
    int64_t index = 0;
    int64_t option = 0;
    int64_t value = 0;
    const size_t count = line.words.size();
    if (count < 3 || count > 4 || !numberAt(line, 0, 0, 255, index) ||
        !numberAt(line, 2, 0, 255, option) || (count == 4 && !numberAt(line, 3, 0, 255, value)))
        return "post INDEX KEY OPTION [VALUE]";
    std::string text = "request;" + line.words[1] + ";";
    text += static_cast<char>(option);
    if (count == 4)
        text += static_cast<char>(value);
    postCommand(bmc.slot, bmc.ledger, {static_cast<uint8_t>(index), text});
    return "";
}

std::string setupPostRaw(Bmc& bmc, const CommandLine& line) {
    int64_t index = 0;
    Bytes bytes;
    if (!numberAt(line, 0, 0, 255, index) || !parseHex(afterFirstWord(line), bytes) ||
        bytes.size() > MAX_COMMAND_TEXT)
        return "postraw INDEX HEX";
    postCommand(bmc.slot, bmc.ledger,
                {static_cast<uint8_t>(index), std::string(bytes.begin(), bytes.end())});
    return "";
}

std::string setupUnpost(Bmc& bmc, const CommandLine&) {
    bmc.slot.queue.clear();
    bmc.slot.phase = SlotPhase::IDLE;
    return "";
}

std::string setupFault(Bmc& bmc, const CommandLine& line) {
    Fault fault;
    std::string error = parseFault(line.words, fault);
    if (error.empty())
        bmc.faults.faults.push_back(fault);
    return error;
}

std::string setupAnswer(Bmc& bmc, const CommandLine& line) {
    ScriptedAnswer answer;
    if (line.words.size() < 2 || !parseTarget(line.words[0], answer.target) ||
        !parseHex(afterFirstWord(line), answer.bytes))
        return "answer TARGET HEX";
    bmc.faults.answers.push_back(answer);
    return "";
}

std::string setupDelay(Bmc& bmc, const CommandLine& line) {
    return takeNumber(line, 60000, "delay MS",
                      [&](int64_t ms) { bmc.faults.delayMs = static_cast<int>(ms); });
}

std::string setupNoFault(Bmc& bmc, const CommandLine&) {
    bmc.faults = Faults();
    return "";
}

std::string setupWatchdog(Bmc& bmc, const CommandLine& line) {
    const std::string& mode = line.rest;
    if (mode != "b6" && mode != "b3" && mode != "both" && mode != "none")
        return "watchdog b6|b3|both|none";
    bmc.watchdog.answersNew = mode == "b6" || mode == "both";
    bmc.watchdog.answersOld = mode == "b3" || mode == "both";
    if (mode == "none")
        bmc.watchdog.running = false;
    return "";
}

std::string setupIpmi(Bmc& bmc, const CommandLine& line) {
    if (line.rest != "2.0" && line.rest != "1.5")
        return "ipmi 2.0|1.5";
    bmc.identity.ipmiVersion = line.rest == "2.0" ? 0x02 : 0x51;
    return "";
}

std::string setupClock(Bmc& bmc, const CommandLine& line) {
    return takeNumber(line, 0xFFFFFFFFLL, "clock SECONDS", [&](int64_t seconds) {
        setSelTime(bmc.sel, bmc.ledger, static_cast<uint32_t>(seconds));
    });
}

std::string setupFlag(Bmc& bmc, const CommandLine& line) {
    return takeNumber(line, 1, "flag 0|1",
                      [&](int64_t flag) { bmc.panel.restartClean = static_cast<uint8_t>(flag); });
}

std::string setupCapacity(Bmc& bmc, const CommandLine& line) {
    return takeNumber(line, 65534, "capacity RECORDS",
                      [&](int64_t records) { bmc.sel.capacity = static_cast<size_t>(records); });
}

static bool readWholeFile(const std::string& path, Bytes& content) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(path.c_str(), "rbe"), fclose);
    if (!file)
        return false;
    uint8_t buffer[4096];
    size_t count = 0;
    while ((count = fread(buffer, 1, sizeof buffer, file.get())) > 0)
        content.insert(content.end(), buffer, buffer + count);
    return ferror(file.get()) == 0;
}

static std::string changeFile(OfferedFile& file, const CommandLine& line) {
    int64_t number = 0;
    if (line.words[1] == "length" && numberAt(line, 2, 0, 0xFFFFFFFFLL, number))
        file.reportedLength = number;
    else if (line.words[1] == "preparing" && numberAt(line, 2, 0, 1000000000, number))
        file.preparingPolls = static_cast<size_t>(number);
    else
        return "file ID length N | file ID preparing N";
    return "";
}

std::string setupFile(Bmc& bmc, const CommandLine& line) {
    int64_t id = 0;
    if (line.words.size() < 2 || !parseNumber("0x" + line.words[0], 0, 255, id))
        return "file ID PATH | ID hex HEX | ID length N | ID preparing N | ID none";
    const auto key = static_cast<uint8_t>(id);
    const std::string& verb = line.words[1];
    if (verb == "none") {
        bmc.files.offered.erase(key);
        return "";
    }
    if (verb == "length" || verb == "preparing") {
        const auto found = bmc.files.offered.find(key);
        return found == bmc.files.offered.end() ? "no such file" : changeFile(found->second, line);
    }
    OfferedFile file;
    if (verb == "hex") {
        const std::string hex = afterFirstWord(line);
        if (!parseHex(hex.substr(hex.find("hex") + 3), file.content))
            return "no hexadecimal bytes";
    } else if (!readWholeFile(afterFirstWord(line), file.content)) {
        return "cannot read " + afterFirstWord(line);
    }
    bmc.files.offered[key] = file;
    return "";
}

std::string setupCapability(Bmc& bmc, const CommandLine& line) {
    int64_t size = 32;
    if (line.words.empty() || (line.words[0] != "on" && line.words[0] != "off") ||
        (line.words.size() > 1 && !numberAt(line, 1, 0, 4096, size)))
        return "capability on|off [SIZE]";
    OfferedFile file;
    file.content = capabilityFile(line.words[0] == "on", static_cast<size_t>(size));
    bmc.files.offered[FILE_CAPABILITY] = file;
    return "";
}

std::string setupDriveMap(Bmc& bmc, const CommandLine& line) {
    std::vector<MappedDrive> drives;
    for (const std::string& word : line.words) {
        const size_t equals = word.rfind('=');
        int64_t slot = 0;
        if (equals == std::string::npos || !parseNumber(word.substr(equals + 1), 0, 65535, slot))
            return "drivemap [SERIAL=SLOT]...";
        drives.push_back({word.substr(0, equals), static_cast<uint16_t>(slot)});
    }
    OfferedFile file;
    file.content = driveMapFile(drives);
    bmc.files.offered[FILE_DRIVE_MAP] = file;
    return "";
}

std::string setupNvme(Bmc& bmc, const CommandLine& line) {
    if (line.rest == "none") {
        bmc.panel.bays.clear();
        return "";
    }
    int64_t aoc = 0;
    int64_t group = 0;
    int64_t slot = 0;
    if (line.words.size() < 4 || !numberAt(line, 0, 0, MAX_AOC, aoc) ||
        !numberAt(line, 1, 0, MAX_GROUP, group) || !numberAt(line, 2, 0, MAX_SLOT, slot))
        return "nvme AOC GROUP SLOT SERIAL | none";
    Bay bay;
    bay.serial = line.words[3];
    const Position position = {static_cast<int>(aoc), static_cast<int>(group),
                               static_cast<int>(slot)};
    bmc.panel.bays[position] = bay;
    return "";
}

} // namespace bmcsim
