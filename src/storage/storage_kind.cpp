#include "storage/storage_kind.h"

#include "config/logs.h"
#include "system_info.h"
#include "text.h"
#include "tools/ask.h"
#include "tools/graid.h"

#include <cstdio>

int getHddType() {
    constexpr const char* LABEL = "hdd type ->";
    static int type = 0; // while graid does not tell, that of the time before
    if (const reply& answer = ask({graidList(), LABEL}); answer.known)
        type = holdsText(answer.text, "geom name") ? 1 : 0;
    else
        static_flag = 1;
    std::printf("hdd type : %d\n", type);
    printIntLog(LABEL, type);
    return type;
}
