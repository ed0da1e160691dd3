#include "host/lan_record.h"

#include "system_info.h"

#include <algorithm>

namespace {

constexpr std::size_t LIST_MOST = 256;
constexpr std::size_t RECORD_MOST = RECORD_SIZE - 1;
constexpr std::size_t FILLED_LENGTH = 3; // of an empty field, once it is "N/A"

constexpr lan_field LISTS[] = {LAN_IPV4, LAN_IPV6, LAN_NETMASKS, LAN_DNS};
constexpr lan_field TEXTS[] = {LAN_NAME, LAN_GATEWAY, LAN_HOST, LAN_DESCRIPTION};

std::size_t filledLength(const lan_fields& fields) {
    std::size_t length = 0;
    for (const std::string& field : fields)
        length += (field.empty() ? FILLED_LENGTH : field.size()) + 1;
    return length;
}

template <std::size_t N>
std::string& longestOf(const lan_field (&which)[N], lan_fields& fields) {
    const auto shorter = [&](lan_field a, lan_field b) {
        return fields[a].size() < fields[b].size();
    };
    return fields[*std::max_element(which, which + N, shorter)];
}

void dropLast(std::string& joined) {
    const std::size_t comma = joined.rfind(',');
    joined.resize(comma == std::string::npos ? 0 : comma);
}

} // namespace

std::string joinedList(const std::vector<std::string>& items) {
    std::string joined;
    for (const std::string& item : items) {
        const std::string addition = &item == &items.front() ? item : "," + item;
        if (joined.size() + addition.size() > LIST_MOST)
            break;
        joined += addition;
    }
    return joined;
}

std::string lanRecord(lan_fields fields) {
    for (std::string& field : fields)
        field.erase(std::remove_if(field.begin(), field.end(),
                                   [](char c) { return c == ';' || c == '\n'; }),
                    field.end());
    while (filledLength(fields) > RECORD_MOST) {
        std::string& list = longestOf(LISTS, fields);
        if (!list.empty())
            dropLast(list);
        else
            longestOf(TEXTS, fields).pop_back();
    }
    std::string record;
    for (const std::string& field : fields)
        record.append(field).append(";");
    return record;
}
