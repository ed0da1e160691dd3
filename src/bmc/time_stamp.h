// The BMC's clock and the agent information record.
#pragma once

#include "system_info.h"

constexpr int TIME_STAMP_SIZE = 4;

// The service's start time in the BMC's SEL time (least significant byte first), with a zero
// byte behind it so that it can be read as a text. Guarded by info_lock.
extern BYTE mTimeStamp[TIME_STAMP_SIZE + 1];

// Fills 4 bytes with the BMC's SEL time (IPMI v2.0, 31.10); zeros when it can't be read.
void getTimeStamp(BYTE* timeStamp);

// Begins the main log anew and uploads the SEL time as parameter 202. Returns 0.
int printTimeStamp();

// Uploads and logs version, build, protocol, mStatus and mTimeStamp as parameter 204. Returns 0.
int getVYNInfo();
