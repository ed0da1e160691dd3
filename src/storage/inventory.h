// The storage inventory: every disk, partition, controller, volume and drive as one record.
//
// Fields of a record are separated by ";" and ":", neither of which occurs in a value; the tag
// comes first: HD (onboard disk), PT (its partition), LSI (drive behind a MegaRAID controller),
// BRCM_IR_CNTL and BRCM_II_CNTL (controllers), BRCM_IR_VD (volume), BRCM_IR_PD and BRCM_IT_PD
// (drives behind a controller). The scripts beside this file tell the fields.
#pragma once

// Runs the inventory script and, when raidCard3rdParty is 1, the RAID-card script. Prints and
// logs the items, uploads them (parameters 198 and 199), raises drive events and reports missing
// drives, unless a script timed out. When the inventory script prints nothing, that is logged and
// nothing else happens: no drive is taken for missing. Returns 0. Collecting thread only.
int getSmartStorageUsage();
