#include "storage/storage_kind.h"

#include "config/logs.h"
#include "text.h"
#include "tools/ask.h"
#include "tools/graid.h"

#include <cstdio>

int getHddType() {
    constexpr const char* LABEL = "hdd type ->";
    const int type = holdsText(ask({graidList(), LABEL}).text, "geom name") ? 1 : 0;
    std::printf("hdd type : %d\n", type);
    printIntLog(LABEL, type);
    return type;
}
