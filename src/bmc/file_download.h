// The two files that the BMC offers: the capability file and the BIOS drive map (OEM command
// 0x30/0xA0).
#pragma once

// 1 when the BMC's firmware supports NVMe data (capability file, byte 27, bit 2), else 0, also on
// failure. Prints which; failures go to the error log.
int isSupportedNVMe();

// Downloads the BIOS drive map into the drive map file. 1 when it was read with at least one
// drive, else 0; failures go to the error log.
int isSupportedSaveBiosHdd();
