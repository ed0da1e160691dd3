# 140 drives in enclosures of 24
printf 'Avago Technologies SAS3 IR Configuration Utility.
Version 9.00.00.00 (2015.03.16) 
Copyright (c) 2009-2015 Avago Technologies. All rights reserved. 

Read configuration has been initiated for controller %s
------------------------------------------------------------------------
Controller information
------------------------------------------------------------------------
  Controller type                         : SAS3008
  BIOS version                            : 8.21.00.00
  Firmware version                        : 9.00.100.00
  Channel description                     : 1 Serial Attached SCSI
  Initiator ID                            : 0
  Maximum physical devices                : 1023
  Concurrent commands supported           : 8192
  Slot                                    : Unknown
  Segment                                 : 0
  Bus                                     : 2
  Device                                  : 0
  Function                                : 0
  RAID Support                            : No
------------------------------------------------------------------------
IR Volume information
------------------------------------------------------------------------
------------------------------------------------------------------------
Physical device information
------------------------------------------------------------------------
Initiator at ID #0
' "$1"
slot=0
while [ "$slot" -lt 140 ]; do
    printf '
Device is a Hard disk
  Enclosure #                             : %d
  Slot #                                  : %d
  SAS Address                             : 50f1e2d-0-c4b5-a6fe
  State                                   : Ready (RDY)
  Size (in MB)/(in sectors)               : 3815447/7814037167
  Manufacturer                            : TAILSPIN
  Model Number                            : TS4000
  Firmware Revision                       : T40C
  Serial No                               : TS4%s%d
  Unit Serial No(VPD)                     : TS4%s%d
  GUID                                    : 50f1e2d3c4b5a6fe
  Protocol                                : SAS
  Drive Type                              : SAS_HDD
' $((slot / 24 + 2)) $((slot % 24)) "$1" $((1000 + slot)) "$1" $((1000 + slot))
    slot=$((slot + 1))
done
printf '%s' '------------------------------------------------------------------------
Enclosure information
------------------------------------------------------------------------
  Enclosure#                              : 1
  Logical ID                              : 50f1e2d3:c4b5a691
  Numslots                                : 8
  StartSlot                               : 0
------------------------------------------------------------------------
SAS3IRCU: Command DISPLAY Completed Successfully.
SAS3IRCU: Utility Completed Successfully.
'
