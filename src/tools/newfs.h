// "newfs -N PARTITION": how a filesystem would be laid out; nothing is written.
#pragma once

#include "tools/program.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

command_line newfsDry(const std::string& partition);

// The block size in bytes.
std::optional<std::uint64_t> parseNewfs(std::string_view text);
