// The two files that the BMC offers: the capability file and the BIOS drive map.
//
// Transfer (OEM command 0x30/0xA0), told apart by the first data byte:
//   0x05, file id                          prepare: two bytes of reservation id
//   0x06, reservation                      status: 0x01 still preparing, else ready and the file
//                                          length (4 bytes, least significant first)
//   0x07, reservation, offset (4), count (2)  read: the bytes
//   0x08, reservation                      done
// A response that is shorter than it should be counts as filled up with zeros.
#pragma once

#include "system_info.h"

// 1 when the BMC's firmware supports NVMe data (capability file, byte 27, bit 2), else 0, also on
// failure. Prints which; failures go to the error log. May block for 30 seconds while the BMC
// prepares the file.
int isSupportedNVMe();

// Downloads the BIOS drive map into the drive map file: "Hdd count" and the number of drives, then
// the serial number and slot of each. 1 when it was read with at least one drive, else 0; failures
// go to the error log, and what was written until then stays. May block like isSupportedNVMe; a
// stop ends it.
int isSupportedSaveBiosHdd();

// The low 4 or 2 bytes of a value, least significant first.
void longTo4Bytes(long value, BYTE* array);
void longTo2Bytes(long value, BYTE* array);
