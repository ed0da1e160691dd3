// The text of a LAN record: twelve fields, each followed by ";".
#pragma once

#include <array>
#include <string>
#include <vector>

enum lan_field {
    LAN_INDEX,
    LAN_MAC,
    LAN_NAME,
    LAN_IPV4,
    LAN_IPV6,
    LAN_GATEWAY,
    LAN_NETMASKS,
    LAN_HOST,
    LAN_DNS,
    LAN_SPEED,
    LAN_DESCRIPTION,
    LAN_LINK,
    LAN_FIELDS
};

using lan_fields = std::array<std::string, LAN_FIELDS>;

// Joins with ",", up to the last address that fits whole into 256 characters: half of one would be
// another address.
std::string joinedList(const std::vector<std::string>& items);

// The record, at most 511 characters once its empty fields are filled. It always has all its
// fields: the longest list loses addresses from its end until it fits, and when no list is left
// the longest text is cut. What would end a field or the record is left out of the values.
std::string lanRecord(lan_fields fields);
