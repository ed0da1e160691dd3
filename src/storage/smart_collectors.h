// The two smaller storage collectors. Both print and log their items, upload them (parameters 198
// and 199) and return 0; when there is no record, that is logged and nothing uploaded.
// Drives that are missing are not noticed. Collecting thread only.
#pragma once

// Health of every drive behind every MegaRAID controller: "LSI" records of device ID, health,
// serial and firmware. No events.
int getSmartLSI();

// The software RAID volumes ("Logical" records) and the health of their members (short HD records,
// whose drive index is volume index x 16 + drive index), with the drive events of the members.
int getSmartIntelRSTe();
