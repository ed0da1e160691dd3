// What stands at the BMC after a pass that nothing disturbed, field by field, and the judgement of
// a whole pass.
#include "oracle.h"

#include <algorithm>

namespace sim {

namespace {

using Texts = std::vector<std::string>;

// Nothing went wrong in this pass, and nothing is left alone for what went wrong before.
bool undisturbed() {
    return stage.faults.empty() &&
           std::none_of(stage.hung.begin(), stage.hung.end(),
                        [](auto& one) { return stage.pass < one.second + LEFT_ALONE; });
}

std::string compare(std::uint8_t selector, const Texts& due) {
    const bmcsim::Stored& stored = storedUnder(stage.bmc.parameters, selector);
    const std::size_t count = std::max(due.size(), stored.texts.size());
    for (std::size_t i = 0; i < count; i++) {
        const std::string wanted = i < due.size() ? "\"" + due[i] + "\"" : "nothing";
        const std::string there =
            i < stored.texts.size() ? "\"" + stored.texts[i] + "\"" : "nothing";
        if (wanted == there)
            continue;
        const auto differ = std::mismatch(wanted.begin(), wanted.end(), there.begin(), there.end());
        return format("wrong value %d, %zu: due was ", selector, i) + wanted + ", told was " +
               bmcsim::escapeText(there.substr(0, 24)) + " ... " +
               bmcsim::escapeText(std::string(differ.second, there.end()));
    }
    return "";
}

std::string cpuText(const std::array<std::int64_t, 5>& before) {
    std::int64_t total = 0;
    for (std::size_t i = 0; i < before.size(); i++)
        total += stage.world.ticks.at(i) - before.at(i);
    const auto all = static_cast<double>(std::max<std::int64_t>(total, 1));
    const auto idle = static_cast<double>(stage.world.ticks[4] - before[4]);
    return format("%.2f;", static_cast<double>(static_cast<float>((all - idle) / all * 100)));
}

std::string memoryText(const std::vector<int>& samples) {
    std::int64_t sum = 0;
    for (const int sample : samples)
        sum += sample;
    return std::to_string(sum / static_cast<std::int64_t>(samples.size())) + ";";
}

Texts textsOf(const std::vector<Item>& items) {
    Texts texts;
    for (const Item& item : items)
        texts.push_back(item.text);
    return texts;
}

Texts lanRecords(const World& world) {
    Texts texts;
    for (const Nic* nic : nicsByMac(world, LAN_MOST))
        texts.push_back(lanRecord(world, *nic));
    return texts;
}

Texts usageRecords(const World& world, const Samples& samples) {
    Texts texts;
    for (const Nic* nic : reportedNics(world, USAGE_MOST))
        texts.push_back(usageRecord(*nic, samples));
    return texts;
}

} // namespace

std::string judgeValues(const Memory& memory) {
    const World& world = stage.world;
    std::map<std::uint8_t, Texts> due = {{195, lanRecords(world)},
                                         {196, {cpuText(memory.ticks)}},
                                         {197, {memoryText(memory.samples.memory)}},
                                         {201, usageRecords(world, memory.samples)},
                                         {204, {memory.agent}}};
    if (memory.named) {
        due[192] = {std::string(osName()) + ";"};
        due[193] = {osVersion(world) + ";"};
    }
    if (world.nvme_enabled)
        due[206] = nvmeRecords(world);
    if (!memory.rste)
        due[199] = textsOf(storageItems(world));
    else if (world.rste_enabled)
        due[199] = textsOf(rsteItems(world));
    for (const auto& [selector, texts] : due) {
        // Of a list without a record nothing is told; of NVMe drives their number is.
        const std::string flaw = texts.empty() && selector != 206 ? "" : compare(selector, texts);
        if (!flaw.empty())
            return flaw;
    }
    const std::string& stamp = storedUnder(stage.bmc.parameters, 202).texts.front();
    const std::uint32_t told = bmcsim::littleEndian({stamp.begin(), stamp.end()}, 0, 4);
    return told - memory.clock <= 1 ? "" : "the time stamp is another";
}

std::string judgePass(Memory& memory) {
    std::string flaw = judgeEvents(memory);
    if (flaw.empty() && !stage.flaws.empty())
        flaw = stage.flaws.front();
    if (flaw.empty() && !stage.bmc.ledger.complaints.empty())
        flaw = "the BMC complains: " + stage.bmc.ledger.complaints.front();
    if (flaw.empty() && stage.open_drives != 0)
        flaw = "an NVMe drive is left open";
    if (flaw.empty() && undisturbed())
        flaw = judgeValues(memory);
    memory.first_pass = false;
    memory.static_due = memory.static_due && !memory.static_over;
    memory.samples = {};
    if (faultOf(Trouble::ticks) == nullptr)
        memory.ticks = stage.world.ticks;
    return flaw;
}

} // namespace sim
