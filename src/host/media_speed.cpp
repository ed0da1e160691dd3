#include "host/media_speed.h"

#include "text.h"

#include <algorithm>

namespace {

struct media_speed {
    std::string_view name;
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

// What the names of other media begin with, before "base" in any case ("100GBase-SR4") or "-"
// ("25G-AUI").
constexpr media_speed RATES[] = {
    {"10", 10},     {"100", 100},     {"1000", 1000},   {"2500", 2500},
    {"5000", 5000}, {"2.5G", 2500},   {"5G", 5000},     {"10G", 10240},
    {"20G", 20480}, {"25G", 25600},   {"40G", 40960},   {"50G", 51200},
    {"56G", 57344}, {"100G", 102400}, {"200G", 204800}, {"400G", 409600}};

bool isMediaOfRate(std::string_view word, std::string_view rate) {
    if (word.substr(0, rate.size()) != rate ||
        word.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                               "0123456789.-/") != word.npos)
        return false;
    word.remove_prefix(rate.size());
    return sameText(word.substr(0, 4), "base") || (rate.back() == 'G' && word.substr(0, 1) == "-");
}

} // namespace

int getSpeedMB(std::string_view buffer) {
    for (const media_speed& media : MEDIA_SPEEDS)
        if (buffer == media.name)
            return media.megabits;
    for (const media_speed& rate : RATES)
        if (isMediaOfRate(buffer, rate.name))
            return rate.megabits;
    return 0;
}

int linkSpeed(const std::vector<std::string>& media) {
    for (const std::string& word : media)
        if (const int speed = getSpeedMB(word); speed != 0)
            return speed;
    return 0;
}
