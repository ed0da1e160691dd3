// CPU time, memory, the interface MIB (ifmib(4)) and the interface addresses (getifaddrs(3)).
#include "platform/failed.h"
#include "platform/platform.h"

// The kernel's headers expect it to come first.
#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ifaddrs.h>
#include <net/if.h>
#include <net/if_dl.h>
#include <net/if_mib.h>
#include <sys/sysctl.h>
#include <unistd.h>
#include <utility>

namespace platform {

static_assert(CTL_NET == 4 && PF_LINK == 18 && NETLINK_GENERIC == 0 && IFMIB_IFDATA == 2 &&
              IFDATA_GENERAL == 1);
static_assert(INTERFACE_UP == IFF_UP && INTERFACE_LOOPBACK == IFF_LOOPBACK);
static_assert(sizeof(ifmibdata::ifmd_name) == sizeof(::ifmibdata::ifmd_name));
static_assert(sizeof(::ifmibdata::ifmd_data.ifi_ibytes) == sizeof(std::uint64_t));
static_assert(sizeof(sockaddr_in) == 16);
static_assert(offsetof(sockaddr_dl, sdl_nlen) == 5 && offsetof(sockaddr_dl, sdl_alen) == 6 &&
              offsetof(sockaddr_dl, sdl_data) == 8);

// A value of another size than asked for is a failure too. `length` is what the call left there: as
// a copy it might be taken before the call.
static int sized(int result, const std::size_t& length, std::size_t wanted) {
    return result == 0 && length != wanted ? failed(EINVAL) : result;
}

int cp_time(std::array<std::int64_t, 5>& ticks) {
    static_assert(sizeof ticks == 40 && sizeof(long) == sizeof ticks[0]);
    std::size_t length = sizeof ticks;
    return sized(sysctlbyname("kern.cp_time", ticks.data(), &length, nullptr, 0), length,
                 sizeof ticks);
}

// One page count of the virtual memory system, in bytes.
static int pages(const char* name, unsigned page_size, std::uint64_t& bytes) {
    unsigned count = 0;
    std::size_t length = sizeof count;
    if (sized(sysctlbyname(name, &count, &length, nullptr, 0), length, sizeof count) != 0)
        return -1;
    bytes = std::uint64_t{count} * page_size;
    return 0;
}

int memory(memory_amounts& amounts) {
    unsigned long physical = 0;
    std::size_t length = sizeof physical;
    if (sized(sysctlbyname("hw.physmem", &physical, &length, nullptr, 0), length,
              sizeof physical) != 0)
        return -1;
    unsigned page_size = 0;
    length = sizeof page_size;
    if (sized(sysctlbyname("hw.pagesize", &page_size, &length, nullptr, 0), length,
              sizeof page_size) != 0)
        return -1;
    amounts.physical = physical;
    return pages("vm.stats.vm.v_inactive_count", page_size, amounts.inactive) != 0
               ? -1
               : pages("vm.stats.vm.v_free_count", page_size, amounts.free);
}

int host_name(std::string& name) {
    char text[256] = {};
    if (gethostname(text, sizeof text - 1) != 0)
        return -1;
    name = text;
    return 0;
}

int interface_count(int& count) {
    std::size_t length = sizeof count;
    return sized(sysctlbyname("net.link.generic.system.ifcount", &count, &length, nullptr, 0),
                 length, sizeof count);
}

int interface_data(int row, ifmibdata& data) {
    int name[] = {CTL_NET, PF_LINK, NETLINK_GENERIC, IFMIB_IFDATA, row, IFDATA_GENERAL};
    ::ifmibdata kernel = {};
    std::size_t length = sizeof kernel;
    if (sized(sysctl(name, 6, &kernel, &length, nullptr, 0), length, sizeof kernel) != 0)
        return -1;

    std::memcpy(data.ifmd_name, kernel.ifmd_name, sizeof data.ifmd_name);
    data.ifmd_name[sizeof data.ifmd_name - 1] = '\0';
    data.ifmd_flags = static_cast<unsigned>(kernel.ifmd_flags);
    data.ifi_ibytes = kernel.ifmd_data.ifi_ibytes;
    data.ifi_ierrors = kernel.ifmd_data.ifi_ierrors;
    data.ifi_obytes = kernel.ifmd_data.ifi_obytes;
    data.ifi_oerrors = kernel.ifmd_data.ifi_oerrors;
    return 0;
}

static address_family familyOf(const sockaddr* address) {
    switch (address == nullptr ? AF_UNSPEC : address->sa_family) {
    case AF_INET:
        return address_family::inet;
    case AF_INET6:
        return address_family::inet6;
    case AF_LINK:
        return address_family::link;
    default:
        return address_family::other;
    }
}

static void copyAddress(const ifaddrs& entry, interface_address& address) {
    const sockaddr& source = *entry.ifa_addr;
    std::memcpy(&address.address, &source,
                std::min<std::size_t>(source.sa_len, sizeof address.address));
    address.address_length = source.sa_len;

    // The kernel may keep a netmask without its trailing zero bytes, its length shortened, and
    // without its family: here it gets those of the address.
    if (const sockaddr* mask = entry.ifa_netmask) {
        std::memcpy(&address.netmask, mask, std::min(mask->sa_len, source.sa_len));
        address.netmask.ss_len = source.sa_len;
        address.netmask.ss_family = source.sa_family;
    }
}

// The link-level address follows the interface name in the socket address.
static void copyMac(const sockaddr* source, interface_address& address) {
    sockaddr_dl link;
    std::memcpy(&link, source, offsetof(sockaddr_dl, sdl_data));
    const std::size_t start = offsetof(sockaddr_dl, sdl_data) + link.sdl_nlen;
    address.has_mac =
        link.sdl_alen == address.mac.size() && start + address.mac.size() <= link.sdl_len;
    if (address.has_mac)
        std::memcpy(address.mac.data(), reinterpret_cast<const char*>(source) + start,
                    address.mac.size());
}

int interface_addresses(std::vector<interface_address>& addresses) {
    addresses.clear();
    ifaddrs* head = nullptr;
    if (getifaddrs(&head) != 0)
        return -1;
    for (const ifaddrs* entry = head; entry != nullptr; entry = entry->ifa_next) {
        interface_address address;
        address.name = entry->ifa_name;
        address.family = familyOf(entry->ifa_addr);
        if (address.family == address_family::link)
            copyMac(entry->ifa_addr, address);
        else if (address.family != address_family::other)
            copyAddress(*entry, address);
        addresses.push_back(std::move(address));
    }
    freeifaddrs(head);
    return 0;
}

} // namespace platform
