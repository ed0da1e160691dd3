#include "kcs_linux.h"

#include "include_linux/ipmi_oem.h"

unsigned int KCS_DATA = 0xCA2;
unsigned int KCS_STATUS = 0xCA3;
int resp_data_len = 0;

namespace {

// The IPMI Version field of the Get Device ID response (IPMI v2.0, 20.1), counted in the frame.
constexpr int VERSION_BYTE = 7;

struct detection {
    unsigned int data_port;
    unsigned int status_port;
    unsigned char version;
};

constexpr detection ATTEMPTS[] = {
    {0xCA2, 0xCA3, 0x02},
    {0xCA8, 0xCAC, 0x02},
    {0xCA2, 0xCA3, 0x51},
};

bool ports_enabled = false;

} // namespace

void kcs_enable_ports() {
    ports_enabled = true;
}

int init_ipmi(unsigned char* ipmi_ver) {
    for (const detection& attempt : ATTEMPTS) {
        KCS_DATA = attempt.data_port;
        KCS_STATUS = attempt.status_port;
        unsigned char frame[FRAME_SIZE] = {NETFN_APP << 2, CMD_GET_DEVICE_ID};
        unsigned char response[FRAME_SIZE] = {};
        if (kcs_Interface(frame, response, 2, 0) == 0 && resp_data_len > VERSION_BYTE &&
            response[2] == 0 && response[VERSION_BYTE] == attempt.version) {
            *ipmi_ver = attempt.version;
            return 0;
        }
    }
    return 1;
}

int kcs_Interface(unsigned char* RequestCmd, unsigned char* ResponseBuf, int kcs_ReqLength,
                  int kcs_CurLength) {
    int length = 0;
    if (ipmiCmd(RequestCmd, ResponseBuf, kcs_ReqLength, &length) == 0) {
        resp_data_len = length;
        return 0;
    }
    return ports_enabled ? kcs_exchange(RequestCmd, ResponseBuf, kcs_ReqLength, kcs_CurLength) : 1;
}
