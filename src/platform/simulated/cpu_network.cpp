// CPU counters, memory, host name, interfaces and addresses from the files of a recorded host. They
// are read again on every call; a missing file is ENOENT, a line that is not as it should be
// EINVAL.
#include "platform/failed.h"
#include "platform/platform.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <net/if.h>
#include <sstream>
#include <string_view>

namespace platform {
namespace {

using words = std::vector<std::string>;

// The words of every line that has any; "#" starts a comment.
int readLines(const char* name, std::vector<words>& lines) {
    const char* host = std::getenv("VYN_SIM_HOST");
    std::ifstream file(host == nullptr ? std::string() : std::string(host) + "/" + name);
    if (!file)
        return failed(ENOENT);
    for (std::string line; std::getline(file, line);) {
        std::istringstream stream(line.substr(0, line.find('#')));
        words found;
        for (std::string word; stream >> word;)
            found.push_back(word);
        if (!found.empty())
            lines.push_back(found);
    }
    return 0;
}

// Decimal, or hexadecimal with or without "0x" for base 16.
bool number(const std::string& text, std::uint64_t most, std::uint64_t& value, int base = 10) {
    const char first = text.empty() ? '\0' : text[0];
    char* end = nullptr;
    errno = 0;
    value = std::strtoull(text.c_str(), &end, base);
    return errno == 0 && first != '-' && first != '+' && !text.empty() && *end == '\0' &&
           value <= most;
}

struct interface_row {
    int row = 0;
    ifmibdata data{};
    bool has_mac = false;
    std::array<std::uint8_t, 6> mac{};
};

bool parseMac(const std::string& text, interface_row& row) {
    if (text == "-")
        return true;
    std::istringstream stream(text);
    std::uint64_t value = 0;
    std::size_t count = 0;
    for (std::string part; std::getline(stream, part, ':'); ++count) {
        if (count == row.mac.size() || !number(part, 0xFF, value, 16))
            return false;
        row.mac[count] = static_cast<std::uint8_t>(value);
    }
    row.has_mac = count == row.mac.size() && text.back() != ':';
    return row.has_mac;
}

bool parseRow(const words& line, interface_row& row) {
    constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t index = 0, flags = 0;
    if (line.size() != 8 || line[1].size() >= sizeof row.data.ifmd_name ||
        !number(line[0], std::numeric_limits<int>::max(), index) || index == 0 ||
        !number(line[2], std::numeric_limits<unsigned>::max(), flags, 16) ||
        !parseMac(line[3], row) || !number(line[4], most, row.data.ifi_ibytes) ||
        !number(line[5], most, row.data.ifi_ierrors) ||
        !number(line[6], most, row.data.ifi_obytes) || !number(line[7], most, row.data.ifi_oerrors))
        return false;
    row.row = static_cast<int>(index);
    row.data.ifmd_flags = static_cast<unsigned>(flags);
    std::memcpy(row.data.ifmd_name, line[1].c_str(), line[1].size() + 1);
    return true;
}

int readRows(std::vector<interface_row>& rows) {
    std::vector<words> lines;
    if (readLines("interfaces.txt", lines) != 0)
        return -1;
    for (const words& line : lines)
        if (!parseRow(line, rows.emplace_back()))
            return failed(EINVAL);
    return 0;
}

// Some kernels' socket addresses begin with their own length.
template <class Address>
auto setLength(Address& address, int) -> decltype(address.sin_len, void()) {
    address.sin_len = sizeof address;
}
template <class Address>
void setLength(Address&, long) {}

sockaddr_storage inetAddress(std::uint32_t host_order) {
    sockaddr_in inet{};
    inet.sin_family = AF_INET;
    inet.sin_addr.s_addr = htonl(host_order);
    setLength(inet, 0);
    sockaddr_storage storage{};
    std::memcpy(&storage, &inet, sizeof inet);
    return storage;
}

bool parseInet(const std::string& text, std::uint64_t prefix, interface_address& address) {
    in_addr inet{};
    if (prefix > 32 || inet_pton(AF_INET, text.c_str(), &inet) != 1)
        return false;
    address.family = address_family::inet;
    address.address = inetAddress(ntohl(inet.s_addr));
    address.address_length = sizeof(sockaddr_in);
    address.netmask = inetAddress(prefix == 0 ? 0 : 0xFFFFFFFFU << static_cast<int>(32 - prefix));
    return true;
}

bool parseInet6(const std::string& text, std::uint64_t prefix, interface_address& address) {
    sockaddr_in6 inet6{};
    if (prefix > 128 || inet_pton(AF_INET6, text.c_str(), &inet6.sin6_addr) != 1)
        return false;
    inet6.sin6_family = AF_INET6;
    std::memcpy(&address.address, &inet6, sizeof inet6);
    address.family = address_family::inet6;
    address.address_length = sizeof inet6;
    for (std::uint64_t bit = 0; bit < prefix; ++bit)
        inet6.sin6_addr.s6_addr[bit / 8] =
            static_cast<std::uint8_t>(inet6.sin6_addr.s6_addr[bit / 8] | 0x80U >> bit % 8);
    for (std::uint64_t bit = prefix; bit < 128; ++bit)
        inet6.sin6_addr.s6_addr[bit / 8] =
            static_cast<std::uint8_t>(inet6.sin6_addr.s6_addr[bit / 8] & ~(0x80U >> bit % 8));
    std::memcpy(&address.netmask, &inet6, sizeof inet6);
    return true;
}

// NAME ADDRESS/PREFIX-LENGTH; an IPv6 address may carry a "%zone".
bool parseAddress(const words& line, interface_address& address) {
    if (line.size() != 2)
        return false;
    const std::size_t slash = line[1].find('/');
    std::uint64_t prefix = 0;
    if (slash == std::string::npos || !number(line[1].substr(slash + 1), 128, prefix))
        return false;
    address.name = line[0];
    const std::string text = line[1].substr(0, slash);
    return parseInet(text, prefix, address) ||
           parseInet6(text.substr(0, text.find('%')), prefix, address);
}

} // namespace

int cp_time(std::array<std::int64_t, 5>& ticks) {
    std::vector<words> lines;
    if (readLines("cp_time.txt", lines) != 0)
        return -1;
    if (lines.size() != 1 || lines[0].size() != ticks.size())
        return failed(EINVAL);
    std::array<std::int64_t, 5> read{};
    for (std::size_t i = 0; i < read.size(); ++i) {
        std::uint64_t value = 0;
        if (!number(lines[0][i], std::numeric_limits<std::int64_t>::max(), value))
            return failed(EINVAL);
        read[i] = static_cast<std::int64_t>(value);
    }
    ticks = read;
    return 0;
}

int memory(memory_amounts& amounts) {
    std::vector<words> lines;
    if (readLines("memory.txt", lines) != 0)
        return -1;
    constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
    if (lines.size() != 1 || lines[0].size() != 3 || !number(lines[0][0], most, amounts.physical) ||
        !number(lines[0][1], most, amounts.inactive) || !number(lines[0][2], most, amounts.free))
        return failed(EINVAL);
    return 0;
}

int host_name(std::string& name) {
    std::vector<words> lines;
    if (readLines("hostname.txt", lines) != 0)
        return -1;
    if (lines.size() != 1 || lines[0].size() != 1)
        return failed(EINVAL);
    name = lines[0][0];
    return 0;
}

int interface_count(int& count) {
    std::vector<interface_row> rows;
    if (readRows(rows) != 0)
        return -1;
    count = 0;
    for (const interface_row& row : rows)
        count = std::max(count, row.row);
    return 0;
}

int interface_data(int row, ifmibdata& data) {
    std::vector<interface_row> rows;
    if (readRows(rows) != 0)
        return -1;
    const auto found =
        std::find_if(rows.begin(), rows.end(),
                     [row](const interface_row& candidate) { return candidate.row == row; });
    if (found == rows.end())
        return failed(ENOENT);
    data = found->data;
    return 0;
}

int interface_addresses(std::vector<interface_address>& addresses) {
    addresses.clear();
    std::vector<interface_row> rows;
    std::vector<words> lines;
    if (readRows(rows) != 0 || readLines("addresses.txt", lines) != 0)
        return -1;
    std::vector<interface_address> read;
    for (const interface_row& row : rows) {
        interface_address& link = read.emplace_back();
        link.name = row.data.ifmd_name;
        link.family = address_family::link;
        link.has_mac = row.has_mac;
        link.mac = row.mac;
    }
    for (const words& line : lines)
        if (!parseAddress(line, read.emplace_back()))
            return failed(EINVAL);
    addresses.swap(read);
    return 0;
}

} // namespace platform
