// The two smaller storage collectors.
#pragma once

int getSmartLSI();       // drives behind MegaRAID controllers; returns 0
int getSmartIntelRSTe(); // software RAID volumes and their members, with drive events; returns 0
