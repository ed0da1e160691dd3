#include "bmc/time_stamp.h"

#include "bmc/parameter_upload.h"
#include "bmc/request.h"
#include "config/logs.h"

#include <algorithm>
#include <cstdio>
#include <string>

BYTE mTimeStamp[TIME_STAMP_SIZE + 1] = {};

void getTimeStamp(BYTE* timeStamp) {
    std::fill_n(timeStamp, TIME_STAMP_SIZE, BYTE{0});
    const bmc_response clock = askBmc(NETFN_STORAGE, CMD_GET_SEL_TIME, {});
    if (clock.ok())
        std::copy_n(clock.data.begin(), std::min<DWORD>(clock.length, TIME_STAMP_SIZE), timeStamp);
}

int printTimeStamp() {
    restartLog();
    BYTE time_stamp[TIME_STAMP_SIZE];
    getTimeStamp(time_stamp);

    BYTE chunk[11] = {PARM_TIME_STAMP, 0x10, TIME_STAMP_SIZE, 0x00, 0x00, 0x00, TIME_STAMP_SIZE};
    std::copy_n(time_stamp, TIME_STAMP_SIZE, chunk + 7);
    const BYTE code = sendChunk(chunk, sizeof chunk);
    if (code != 0) {
        printIntLog("cCode ->", code);
        return 0;
    }
    for (int i = 0; i < TIME_STAMP_SIZE; ++i)
        printHexLog("SEL Time stamp " + std::to_string(i + 1) + " ->", time_stamp[i]);
    return 0;
}

int getVYNInfo() {
    const std::string fields = std::string(VYN_VERSION) + ";" + VYN_BUILD + ";" + VYN_PROTOCOL +
                               ";" + std::to_string(mStatus) + ";";
    char hex[4 * 2 + 1];
    std::snprintf(hex, sizeof hex, "%x%x%x%x", mTimeStamp[0], mTimeStamp[1], mTimeStamp[2],
                  mTimeStamp[3]);
    printLog("VYN info ->", fields + hex + ";");
    ipmiCmdSet(PARM_AGENT, fields + reinterpret_cast<const char*>(mTimeStamp) + ";");
    return 0;
}
