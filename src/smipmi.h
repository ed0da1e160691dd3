// The one entry for every IPMI request of every thread.
#pragma once

#include "include_linux/ipmi_oem.h"

#include <pthread.h>

constexpr BYTE TRANSPORT_FAILED = 0xFF; // completion code of a request that got no response

extern pthread_mutex_t ipmi_lock;
extern unsigned char ipmi_ver; // 0x02, 0x51, or 0 while the BMC is not detected

// Sends a request with `dataLength` (at most 126) data bytes and waits for its response. Returns
// the completion code; `respBuf`, which has room for RESPONSE_SIZE bytes or the whole response of
// the command, gets the `respLength` data bytes after it. A failed transport is TRANSPORT_FAILED
// with length 0. `ipmbAddr` is not used: requests go to the BMC itself. Takes ipmi_lock; the first
// request detects the BMC. Nothing is logged here.
BYTE runIpmiCmd(BYTE ipmbAddr, BYTE netFn, BYTE cmd, const BYTE* data, int dataLength,
                BYTE* respBuf, DWORD* respLength);

// Whether the calling thread's latest request got no response at all: its completion code tells
// nothing of the BMC.
bool transportFailed();

// Lazy detection, with ipmi_lock held: 0 when the BMC is detected, 6 when I/O-port privilege is
// refused, 1 when detection failed.
int initIPMIInterface();

// Destroys ipmi_lock, once no thread uses it any more.
void _destroy();
