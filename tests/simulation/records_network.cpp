// The records of a world's interfaces, field by field.
#include "oracle.h"

#include <algorithm>
#include <cstdio>

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

namespace {

std::string gatewayOf(const World& world, const Nic& nic) {
    for (const bool v6 : {false, true})
        for (const Route& route : routesOf(world))
            if (route.v6 == v6 && route.to == "default" && route.through == nic.name)
                return route.via;
    for (const Route& route : routesOf(world))
        if (route.v6)
            for (const std::string& address : nic.ip6)
                if (route.to == address || route.via == address)
                    return route.via;
    return "";
}

std::string maskOf(int prefix) {
    const unsigned mask = ~0U << (32 - prefix);
    return format("%u.%u.%u.%u", mask >> 24, mask >> 16 & 255, mask >> 8 & 255, mask & 255);
}

int speedOf(const Nic& nic) {
    if (nic.medium < 0)
        return 0;
    const Medium& medium = MEDIA.at(static_cast<std::size_t>(nic.medium));
    return nic.carrier ? medium.speed : medium.unlinked_speed;
}

} // namespace

std::string lanRecord(const World& world, const Nic& nic) {
    std::vector<std::string> lists[4]; // addresses, those of IPv6, masks, name servers
    for (const auto& [address, prefix] : nic.ip4) {
        lists[0].push_back(address);
        if (join(lists[2], ",").find(maskOf(prefix)) == std::string::npos)
            lists[2].push_back(maskOf(prefix));
    }
    lists[1] = nic.ip6;
    if (nic.active())
        lists[3] = world.name_servers;
    const auto [vendor, model] =
        nic.device == nic.name ? adapterOf(nic.device) : std::pair<std::string, std::string>();
    for (auto& list : lists)
        while (join(list, ",").size() > 256) // whole addresses
            list.pop_back();
    for (;;) {
        const std::string text =
            filled(join({std::to_string(nic.row), nic.mac, nic.name, join(lists[0], ","),
                         join(lists[1], ","), gatewayOf(world, nic), join(lists[2], ","),
                         world.host, join(lists[3], ","), std::to_string(speedOf(nic)),
                         vendor + (vendor.empty() ? "" : " ") + model,
                         nic.up && nic.active() ? "up" : "down"},
                        ";") +
                       ";",
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
    std::string text = nic.name + ":" + in_use + ":up;";
    for (const std::uint64_t counter : nic.counters)
        text += std::to_string(counter) + ";";
    return text;
}

namespace {

// As top of FreeBSD 10.1 shows it: kilobytes, from 100000 on megabytes, then gigabytes.
std::int64_t rounded(std::uint64_t bytes) {
    std::int64_t amount = static_cast<std::int64_t>(bytes >> 10), unit = 1024;
    for (; amount >= 100000 && unit < 1 << 30; unit *= 1024)
        amount = (amount + 512) / 1024;
    return amount * unit;
}

} // namespace

void takeSample(Samples& samples, const World& world) {
    const auto physical = static_cast<std::int64_t>(world.physical);
    const std::int64_t in_use = physical - rounded(world.free) - rounded(world.inactive);
    samples.memory.push_back(static_cast<int>(in_use * 100 / physical));
    for (const Nic* nic : reportedNics(world, USAGE_MOST))
        samples.bytes[nic->name].push_back(nic->counters[0] + nic->counters[2]);
}

} // namespace sim
