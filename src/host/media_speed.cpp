#include "host/media_speed.h"

#include "host/shell_operand.h"
#include "shell.h"

namespace {

struct media_speed {
    const char* name;
    int megabits;
};

constexpr media_speed MEDIA_SPEEDS[] = {
    {"10baseT", 10},       {"10base2", 10},        {"10base5", 10},        {"10baseFL", 10},
    {"10baseT/UTP", 10},   {"100baseTX", 100},     {"100baseFX", 100},     {"100baseT4", 100},
    {"100VG-AnyLAN", 100}, {"100baseT2", 100},     {"1000baseSX", 1000},   {"1000baseLX", 1000},
    {"1000baseCX", 1000},  {"1000baseT", 1000},    {"HomePNA", 1},         {"10Gbase-LR", 10240},
    {"10Gbase-SR", 10240}, {"10Gbase-LRM", 10240}, {"10Gbase", 10240},     {"10Gbase-T", 10240},
    {"2500baseSX", 2500},  {"40Gbase-CR4", 40960}, {"40Gbase-SR4", 40960}, {"40Gbase-LR4", 40960},
};

// The active media: in parentheses after what was selected, or the fourth word of the line.
constexpr const char* MEDIA_PIPELINES[] = {
    " | grep media | cut -d'(' -f2 | awk '{print $1}'",
    " | grep media | awk '{print $4}' | sed 's/(//g'",
};

} // namespace

int getSpeedMB(std::string_view buffer) {
    for (const media_speed& media : MEDIA_SPEEDS)
        if (buffer == media.name)
            return media.megabits;
    return 0;
}

int linkSpeed(const std::string& ifname) {
    for (const char* pipeline : MEDIA_PIPELINES) {
        const std::string command = "ifconfig " + shellOperand(ifname) + pipeline;
        if (const int speed = getSpeedMB(captureValue(command, "link speed ->")); speed != 0)
            return speed;
    }
    return 0;
}
