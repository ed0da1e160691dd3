// The device interface record of the driver transport.
#pragma once

#include "include_linux/ipmi.h"

#include <cstdint>

struct ipmi_intf {
    char name[16];
    char desc[128];
    int fd;       // descriptor of the open device, -1 when closed
    int opened;   // 1 once the device is open and configured
    int noanswer; // 0: a response is always awaited
    std::uint32_t my_addr;
    std::uint32_t target_addr;
    std::uint8_t target_channel;
    std::uint8_t devnum;

    int (*open)(ipmi_intf* intf);
    void (*close)(ipmi_intf* intf);
    ipmi_rs* (*sendrecv)(ipmi_intf* intf, ipmi_rq* req);
};
