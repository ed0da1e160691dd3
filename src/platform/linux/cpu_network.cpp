// CPU counters, memory, interfaces and addresses of a Linux kernel: proc(5), netdevice(7),
// getifaddrs(3).
#include "platform/failed.h"
#include "platform/platform.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <ifaddrs.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <sstream>
#include <sys/ioctl.h>
#include <unistd.h>

namespace platform {
namespace {

// The names of all interfaces in the order of their kernel indexes. A name's place here, from 1, is
// its row: the kernel's own indexes have gaps wherever an interface has gone.
int interfaceNames(std::vector<std::string>& names) {
    struct if_nameindex* found = if_nameindex();
    if (found == nullptr)
        return -1;
    std::vector<std::pair<unsigned, std::string>> indexed;
    for (const struct if_nameindex* entry = found; entry->if_index != 0; ++entry)
        indexed.emplace_back(entry->if_index, entry->if_name);
    if_freenameindex(found);
    std::sort(indexed.begin(), indexed.end());
    for (auto& [index, name] : indexed)
        names.push_back(std::move(name));
    return 0;
}

int interfaceFlags(const std::string& name, unsigned& flags) {
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return -1;
    ifreq request{};
    name.copy(request.ifr_name, IFNAMSIZ - 1);
    const int result = ioctl(fd, SIOCGIFFLAGS, &request);
    const int error = errno;
    close(fd);
    flags = static_cast<unsigned short>(request.ifr_flags);
    return result == 0 ? 0 : failed(error);
}

// A line of /proc/net/dev: "name: " and eight received columns (bytes, packets, errors, ...), then
// eight sent ones.
int interfaceCounters(const std::string& name, ifmibdata& data) {
    std::ifstream file("/proc/net/dev");
    if (!file)
        return failed(ENOENT);
    for (std::string line; std::getline(file, line);) {
        const std::size_t start = line.find_first_not_of(' ');
        const std::size_t colon = line.rfind(':');
        if (colon == std::string::npos || line.substr(start, colon - start) != name)
            continue;
        std::array<std::uint64_t, 16> columns{};
        std::istringstream stream(line.substr(colon + 1));
        for (std::uint64_t& column : columns)
            stream >> column;
        if (!stream)
            return failed(EINVAL);
        data.ifi_ibytes = columns[0];
        data.ifi_ierrors = columns[2];
        data.ifi_obytes = columns[8];
        data.ifi_oerrors = columns[10];
        return 0;
    }
    return failed(ENXIO);
}

void takeAddress(const ifaddrs& entry, interface_address& address) {
    const int family = entry.ifa_addr->sa_family;
    if (family == AF_PACKET) {
        sockaddr_ll link{};
        std::memcpy(&link, entry.ifa_addr, sizeof link);
        address.family = address_family::link;
        address.has_mac = link.sll_halen == address.mac.size();
        if (address.has_mac)
            std::memcpy(address.mac.data(), link.sll_addr, address.mac.size());
    } else if (family == AF_INET || family == AF_INET6) {
        address.family = family == AF_INET ? address_family::inet : address_family::inet6;
        address.address_length = family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
        std::memcpy(&address.address, entry.ifa_addr, address.address_length);
        if (entry.ifa_netmask != nullptr)
            std::memcpy(&address.netmask, entry.ifa_netmask, address.address_length);
    }
}

} // namespace

// The first line of /proc/stat: user, nice, system, idle, waiting for I/O, interrupts, soft
// interrupts, stolen by the hypervisor. Waiting is idle time; stolen time is spent, not idle.
int cp_time(std::array<std::int64_t, 5>& ticks) {
    std::ifstream file("/proc/stat");
    std::string word;
    std::array<std::int64_t, 8> columns{};
    if (!(file >> word) || word != "cpu")
        return failed(ENOENT);
    for (std::int64_t& column : columns)
        file >> column;
    if (!file)
        return failed(EINVAL);
    const auto& [user, nice, system, idle, waiting, interrupt, soft, stolen] = columns;

    ticks = {user, nice, system + stolen, interrupt + soft, idle + waiting};
    return 0;
}

// Lines of /proc/meminfo, "Name:   amount kB".
int memory(memory_amounts& amounts) {
    std::ifstream file("/proc/meminfo");
    struct {
        const char* name;
        std::uint64_t& bytes;
        bool found = false;
    } wanted[] = {{"MemTotal:", amounts.physical},
                  {"Inactive:", amounts.inactive},
                  {"MemFree:", amounts.free}};
    for (std::string line; std::getline(file, line);) {
        std::istringstream stream(line);
        std::string name;
        std::uint64_t kilobytes = 0;
        stream >> name >> kilobytes;
        for (auto& amount : wanted)
            if (stream && name == amount.name) {
                amount.bytes = kilobytes * 1024;
                amount.found = true;
            }
    }
    for (const auto& amount : wanted)
        if (!amount.found)
            return failed(ENOENT);
    return 0;
}

int host_name(std::string& name) {
    char text[256] = {};
    if (gethostname(text, sizeof text - 1) != 0)
        return -1;
    name = text;
    return 0;
}

int interface_count(int& count) {
    std::vector<std::string> names;
    if (interfaceNames(names) != 0)
        return -1;
    count = static_cast<int>(names.size());
    return 0;
}

int interface_data(int row, ifmibdata& data) {
    std::vector<std::string> names;
    if (interfaceNames(names) != 0)
        return -1;
    if (row < 1 || static_cast<std::size_t>(row) > names.size())
        return failed(ENXIO);
    const std::string& name = names[static_cast<std::size_t>(row) - 1];

    ifmibdata read{};
    name.copy(read.ifmd_name, sizeof read.ifmd_name - 1);
    if (interfaceFlags(name, read.ifmd_flags) != 0 || interfaceCounters(name, read) != 0)
        return errno == ENODEV || errno == ENXIO ? failed(ENOENT) : -1; // it has just gone
    data = read;
    return 0;
}

int interface_addresses(std::vector<interface_address>& addresses) {
    addresses.clear();
    ifaddrs* found = nullptr;
    if (getifaddrs(&found) != 0)
        return -1;
    for (const ifaddrs* entry = found; entry != nullptr; entry = entry->ifa_next) {
        interface_address& address = addresses.emplace_back();
        address.name = entry->ifa_name;
        if (entry->ifa_addr != nullptr)
            takeAddress(*entry, address);
    }
    freeifaddrs(found);
    return 0;
}

} // namespace platform
