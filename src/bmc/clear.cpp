#include "bmc/clear.h"

#include "bmc/parameter_upload.h"
#include "bmc/request.h"
#include "text.h"

namespace {

bool isCount(BYTE parm) {
    return parm == PARM_LAN_COUNT || parm == PARM_STORAGE_COUNT || parm == PARM_NVME_COUNT ||
           parm == PARM_NETWORK_COUNT;
}

} // namespace

int clearData() {
    for (const BYTE parm : {PARM_OS_NAME, PARM_OS_VERSION, PARM_LAN_COUNT, PARM_CPU, PARM_MEMORY,
                            PARM_STORAGE_COUNT, PARM_NVME_COUNT, PARM_NETWORK_COUNT, PARM_RESERVED,
                            PARM_AGENT, PARM_COMMAND, PARM_COMMAND_RESULT, PARM_TIME_STAMP}) {
        tryBmcAgain(); // no cycle comes after that would make up for what is left out
        if (isCount(parm))
            ipmiCmdSet(parm, itemCount(0));
        else
            ipmiCmdSet(parm, "");
    }
    return 0;
}
