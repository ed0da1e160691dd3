#include "smipmi.h"

#include "kcs_linux.h"
#include "platform/platform.h"
#include "state/schedule.h"

#include <algorithm>

pthread_mutex_t ipmi_lock = PTHREAD_MUTEX_INITIALIZER;
unsigned char ipmi_ver = 0;

namespace {

thread_local bool failed = false;

// Sends the frame; false when there was no response.
bool exchange(unsigned char* frame, unsigned char* response, int length) {
    initIPMIInterface();
    return kcs_Interface(frame, response, length, 0) == 0 && resp_data_len >= 3;
}

} // namespace

bool transportFailed() {
    return failed;
}

int initIPMIInterface() {
    static bool io_opened = false;
    if (ipmi_ver != 0)
        return 0;
    if (!io_opened) {
        if (platform::io_open() != 0)
            return 6;
        io_opened = true;
        kcs_enable_ports();
    }
    return init_ipmi(&ipmi_ver);
}

BYTE runIpmiCmd(BYTE /*ipmbAddr*/, BYTE netFn, BYTE cmd, const BYTE* data, int dataLength,
                BYTE* respBuf, DWORD* respLength) {
    const scoped_lock guard(ipmi_lock);
    *respLength = 0;
    failed = true;
    if (dataLength < 0 || dataLength > FRAME_SIZE - 2)
        return TRANSPORT_FAILED;

    unsigned char frame[FRAME_SIZE] = {static_cast<unsigned char>(netFn << 2), cmd};
    unsigned char response[FRAME_SIZE] = {};
    std::copy_n(data, dataLength, frame + 2);
    if (!exchange(frame, response, dataLength + 2))
        return TRANSPORT_FAILED;
    failed = false;

    std::copy(response + 3, response + resp_data_len, respBuf);
    *respLength = static_cast<DWORD>(resp_data_len - 3);
    return response[2];
}

void _destroy() {
    pthread_mutex_destroy(&ipmi_lock);
}
