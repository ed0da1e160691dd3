#include "host/interface_walk.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

constexpr int MOST_ROWS = 65535; // a kernel numbers its interfaces with 16 bits

} // namespace

std::optional<std::vector<interface_row>> walkInterfaces(std::size_t most) {
    int count = 0;
    if (platform::interface_count(count) != 0)
        return std::nullopt;
    std::vector<interface_row> rows;
    for (int row = std::min(count, MOST_ROWS); row >= 1 && rows.size() < most; --row) {
        platform::ifmibdata data{};
        if (platform::interface_data(row, data) != 0) {
            if (errno == ENOENT)
                continue;
            std::perror("read sysctl");
            break;
        }
        if ((data.ifmd_flags & platform::INTERFACE_LOOPBACK) == 0)
            rows.push_back({row,
                            {data.ifmd_name, strnlen(data.ifmd_name, sizeof data.ifmd_name)},
                            (data.ifmd_flags & platform::INTERFACE_UP) != 0,
                            data});
    }
    return rows;
}
