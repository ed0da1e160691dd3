// The device-driver transport: one request frame over ipmi(4).
//
// Request frame: NetFn << 2, command, data. Response frame: 0, 0, completion code, data.
#pragma once

#include "include_linux/ipmi_intf.h"

constexpr int FRAME_SIZE = 128;

extern ipmi_intf ipmi_open_intf;

// Sends a frame of `kcs_ReqLength` bytes. Returns 0 with the response frame (cut to FRAME_SIZE)
// and its length, or -1 when the driver could not carry it. The caller holds ipmi_lock.
int ipmiCmd(unsigned char* RequestCmd, unsigned char* ResponseBuf, int kcs_ReqLength,
            int* kcs_CurLength);

// The steps below ipmiCmd. ipmi_openipmi_open returns the descriptor or -1, leaving nothing open
// on failure; ipmi_openipmi_send_cmd returns the static response record or null.
int ipmi_openipmi_open(ipmi_intf* intf);
void ipmi_openipmi_close(ipmi_intf* intf);
ipmi_rs* ipmi_openipmi_send_cmd(ipmi_intf* intf, ipmi_rq* req);
