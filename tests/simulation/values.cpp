// What stands at the BMC after a pass that nothing disturbed, field by field, and the judgement of
// a whole pass.
#include "oracle.h"

#include <algorithm>

namespace sim {

std::vector<const Nic*> reportedNics(const World& world, std::size_t most) {
    std::vector<const Nic*> nics;
    for (const Nic& nic : world.nics)
        if (!nic.loopback)
            nics.push_back(&nic);
    std::sort(nics.begin(), nics.end(), [](const Nic* a, const Nic* b) { return a->row > b->row; });
    nics.resize(std::min(nics.size(), most));
    return nics;
}

std::vector<const Nic*> nicsByMac(const World& world, std::size_t most) {
    std::vector<const Nic*> nics = reportedNics(world, most);
    std::stable_sort(nics.begin(), nics.end(), [](const Nic* a, const Nic* b) {
        return a->mac.substr(0, 12) < b->mac.substr(0, 12);
    });
    return nics;
}

void takeSample(Samples& samples, const World& world) {
    // As top of FreeBSD 10.1 shows it: kilobytes, from 100000 on megabytes, then gigabytes.
    const auto rounded = [](std::uint64_t bytes) {
        std::uint64_t amount = bytes >> 10, unit = 1024;
        for (; amount >= 100000 && unit < 1 << 30; unit *= 1024)
            amount = (amount + 512) / 1024;
        return static_cast<std::int64_t>(amount * unit);
    };
    const auto physical = static_cast<std::int64_t>(world.physical);
    samples.memory += (physical - rounded(world.free) - rounded(world.inactive)) * 100 / physical;
    samples.count++;
    for (const Nic* nic : reportedNics(world, USAGE_MOST))
        samples.bytes[nic->name].push_back(nic->counters[0] + nic->counters[2]);
}

namespace {

using Texts = std::vector<std::string>;

std::string gatewayOf(const World& world, const Nic& nic) {
    if (nic.name == world.gateway4_nic || nic.name == world.gateway6_nic)
        return nic.name == world.gateway4_nic ? GATEWAY4 : GATEWAY6;
    return nic.ip6.empty() ? "" : say("link#{}", nic.row);
}

int speedOf(const Nic& nic) {
    if (nic.medium == nullptr)
        return 0;
    return nic.carrier ? nic.medium->speed : nic.medium->unlinked_speed;
}

std::string lanRecord(const World& world, const Nic& nic) {
    Texts lists[4]; // addresses, those of IPv6, masks, name servers
    for (const auto& [address, prefix] : nic.ip4) {
        const unsigned bits = ~0U << (32 - prefix);
        const std::string mask =
            format("%u.%u.%u.%u", bits >> 24, bits >> 16 & 255, bits >> 8 & 255, bits & 255);
        lists[0].push_back(address);
        if (join(lists[2], ",").find(mask) == std::string::npos)
            lists[2].push_back(mask);
    }
    lists[1] = nic.ip6;
    if (nic.carrier && nic.medium != nullptr)
        lists[3] = world.name_servers;
    const auto [vendor, model] =
        nic.device == nic.name ? adapterOf(nic.device) : std::pair<std::string, std::string>();
    for (Texts& list : lists)
        while (join(list, ",").size() > 256) // whole addresses
            list.pop_back();
    for (;;) {
        const std::string text =
            filled(say("{};{};{};{};{};{};{};{};{};{};{}{}{};{};", nic.row, nic.mac, nic.name,
                       join(lists[0], ","), join(lists[1], ","), gatewayOf(world, nic),
                       join(lists[2], ","), world.host, join(lists[3], ","), speedOf(nic), vendor,
                       vendor.empty() ? "" : " ", model, nic.linked() ? "up" : "down"),
                   ";");
        if (text.size() <= 511)
            return text;
        std::max_element(std::begin(lists), std::end(lists), [](const auto& a, const auto& b) {
            return join(a, ",").size() < join(b, ",").size();
        })->pop_back();
    }
}

std::string usageRecord(const Nic& nic, const Samples& samples) {
    if (!nic.up)
        return nic.name + ":0:down;0;0;0;0;";
    std::string in_use = "unknown media type";
    if (const int speed = speedOf(nic); speed >= 1) {
        const std::vector<std::uint64_t>& bytes = samples.bytes.at(nic.name);
        float sum = 0;
        for (std::size_t i = 1; i < bytes.size(); i++)
            sum = static_cast<float>(static_cast<double>(sum) +
                                     static_cast<double>(bytes[i] - bytes[i - 1]) * 8 /
                                         (speed * 1048576.0) * 100);
        const float mean = sum / static_cast<float>(bytes.size());
        in_use = mean < 1.0F ? "<1" : format("%.2f", static_cast<double>(mean));
    }
    const auto& [in, in_errors, out, out_errors] = nic.counters;
    return say("{}:{}:up;{};{};{};{};", nic.name, in_use, in, in_errors, out, out_errors);
}

std::string cpuText(const std::array<std::int64_t, 5>& before) {
    std::int64_t total = 0;
    for (std::size_t i = 0; i < before.size(); i++)
        total += stage.world.ticks.at(i) - before.at(i);
    const auto all = static_cast<double>(std::max<std::int64_t>(total, 1));
    const auto idle = static_cast<double>(stage.world.ticks[4] - before[4]);
    return format("%.2f;", static_cast<double>(static_cast<float>((all - idle) / all * 100)));
}

// Nothing went wrong in this pass, and nothing is left alone for what went wrong before.
bool undisturbed() {
    return stage.faults.empty() &&
           std::none_of(stage.hung.begin(), stage.hung.end(),
                        [](auto& one) { return stage.pass < one.second + LEFT_ALONE; });
}

std::map<std::uint8_t, Texts> dueValues(const Memory& memory) {
    const World& world = stage.world;
    const Samples& samples = memory.samples;
    std::map<std::uint8_t, Texts> due = {{196, {cpuText(memory.ticks)}},
                                         {197, {say("{};", samples.memory / samples.count)}},
                                         {204, {memory.agent}}};
    if (memory.named) {
        due[192] = {"FreeBSD;"};
        due[193] = {osVersion(world) + ";"};
    }
    for (const Nic* nic : nicsByMac(world, LAN_MOST))
        due[195].push_back(lanRecord(world, *nic));
    if (!memory.rste || world.rste_enabled)
        for (const Item& item : memory.rste ? rsteItems(world) : storageItems(world))
            due[199].push_back(item.text);
    for (const Nic* nic : reportedNics(world, USAGE_MOST))
        due[201].push_back(usageRecord(*nic, samples));
    if (world.nvme_enabled) // of a list without a record nothing is told, but of this one
        due[206] = nvmeRecords(world);
    return due;
}

std::string compare(std::uint8_t selector, const Texts& due) {
    const Texts& told = storedUnder(stage.bmc.parameters, selector).texts;
    for (std::size_t i = 0; i < std::max(due.size(), told.size()); i++) {
        const std::string wanted = i < due.size() ? due[i] : "(nothing)";
        const std::string there = i < told.size() ? told[i] : "(nothing)";
        if (wanted != there)
            return say("wrong value {}, {}: due was {}, told was {}", int{selector}, i, wanted,
                       bmcsim::escapeText(there));
    }
    return "";
}

std::string judgeValues(const Memory& memory) {
    for (const auto& [selector, texts] : dueValues(memory))
        if (const std::string flaw = compare(selector, texts); !flaw.empty())
            return flaw;
    const std::string& stamp = storedUnder(stage.bmc.parameters, 202).texts.front();
    const std::uint32_t told = bmcsim::littleEndian({stamp.begin(), stamp.end()}, 0, 4);
    return told - memory.clock <= 1 ? "" : "the time stamp is another";
}

} // namespace

std::string judgePass(Memory& memory) {
    std::string flaw = judgeEvents(memory);
    if (stage.open_drives != 0)
        stage.flaws.emplace_back("an NVMe drive is left open");
    for (const std::string& complaint : stage.bmc.ledger.complaints)
        stage.flaws.push_back("the BMC complains: " + complaint);
    if (flaw.empty() && !stage.flaws.empty())
        flaw = stage.flaws.front();
    if (flaw.empty() && undisturbed())
        flaw = judgeValues(memory);
    memory.first_pass = false;
    memory.static_due = memory.static_due && !memory.static_over;
    memory.samples = {};
    if (faultOf("ticks") == nullptr)
        memory.ticks = stage.world.ticks;
    return flaw;
}

} // namespace sim
