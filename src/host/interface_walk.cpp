#include "host/interface_walk.h"

#include <cstdio>
#include <cstring>

void walkInterfaces(int rows,
                    const std::function<bool(int row, const platform::ifmibdata& data)>& take) {
    for (int row = rows; row >= 1; --row) {
        platform::ifmibdata data{};
        if (platform::interface_data(row, data) != 0) {
            std::perror("read sysctl");
            return;
        }
        if ((data.ifmd_flags & platform::INTERFACE_LOOPBACK) == 0 && !take(row, data))
            return;
    }
}

std::string interfaceName(const platform::ifmibdata& data) {
    return {data.ifmd_name, strnlen(data.ifmd_name, sizeof data.ifmd_name)};
}
