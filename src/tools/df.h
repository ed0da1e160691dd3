// "df -k -l": the mounted local filesystems. A server that does not answer can't hold it up.
#pragma once

#include "tools/program.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The lines of a table of devices; one that was wrapped behind a long name is whole again.
using space_table = std::vector<std::string>;

// In bytes. What is available of a full filesystem is negative: it has been given to root.
struct space_use {
    std::uint64_t total = 0;
    std::uint64_t used = 0;
    std::int64_t available = 0;
};

command_line dfLocal();
space_table parseSpaceTable(std::string_view text);

// What the table says of a device, whose name may hold blanks: a line of exactly this name, else
// one whose name goes on with a mark, as in "ada0p2.eli". Nothing when there is none, or none with
// three numbers that 64 bits can hold.
std::optional<space_use> useOf(const space_table& table, std::string_view device);
