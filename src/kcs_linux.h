// BMC detection and the choice of transport.
// The caller holds ipmi_lock for everything here.
#pragma once

#include "include_linux/kcs2_linux.h"
#include "kcs_exchange.h"

// Detects the BMC by Get Device ID at 0xCA2/0xCA3 (IPMI 2.0), 0xCA8/0xCAC (2.0) and 0xCA2/0xCA3
// again (1.5). Returns 0 and the version byte (0x02 or 0x51), or 1.
int init_ipmi(unsigned char* ipmi_ver);

// Sends one request frame, over the driver or, when that fails and I/O-port privilege is held,
// over KCS, unless an IPMI driver that this process could not open has the ports. Returns 0 with
// ResponseBuf (FRAME_SIZE bytes) and resp_data_len filled, or 1. When requests have failed for some
// seconds under a stop, every further one fails at once.
int kcs_Interface(unsigned char* RequestCmd, unsigned char* ResponseBuf, int kcs_ReqLength,
                  int kcs_CurLength);

// Tells the module that I/O-port privilege was obtained; without it KCS is never tried.
void kcs_enable_ports();
