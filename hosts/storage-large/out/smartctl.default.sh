[ "$1 $2 $3" = "-i -H -A" ] || exit 1
printf 'smartctl 6.3 2014-07-26 r3976 [FreeBSD 10.1-RELEASE amd64] (local build)
Copyright (C) 2002-14, Bruce Allen, Christian Franke, www.smartmontools.org

=== START OF INFORMATION SECTION ===
Device Model:     Fabrikam FX2000
Serial Number:    FX%sL
LU WWN Device Id: 5 0f1e2d 3c4b5a697
Firmware Version: F2.4
User Capacity:    2000,000,000,000 bytes [2000 GB]
Sector Sizes:     512 bytes logical, 4096 bytes physical
Rotation Rate:    7200 rpm
Device is:        Not in smartctl database [for details use: -P showall]
ATA Version is:   ACS-2 (minor revision not indicated)
SATA Version is:  SATA 3.1, 6.0 Gb/s (current: 6.0 Gb/s)
Local Time is:    Tue Mar  3 10:15:42 2015 CET
SMART support is: Available - device has SMART capability.
SMART support is: Enabled

=== START OF READ SMART DATA SECTION ===
SMART overall-health self-assessment test result: PASSED

SMART Attributes Data Structure revision number: 16
Vendor Specific SMART Attributes with Thresholds:
ID# ATTRIBUTE_NAME          FLAG     VALUE WORST THRESH TYPE      UPDATED  WHEN_FAILED RAW_VALUE
  5 Reallocated_Sector_Ct   0x0033   100   100   010    Pre-fail  Always       -       0
  9 Power_On_Hours          0x0032   093   093   000    Old_age   Always       -       6144
 12 Power_Cycle_Count       0x0032   100   100   000    Old_age   Always       -       41
194 Temperature_Celsius     0x0022   072   060   000    Old_age   Always       -       33
199 UDMA_CRC_Error_Count    0x003e   200   200   000    Old_age   Always       -       0

' "${4#/dev/}"
