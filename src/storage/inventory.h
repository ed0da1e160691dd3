// The storage inventory: every disk, partition, controller, volume and drive as one record.
//
// Fields of a record are separated by ";" and ":", neither of which occurs in a value; the tag
// comes first: HD (onboard disk), PT (its partition), LSI (drive behind a MegaRAID controller),
// BRCM_IR_CNTL and BRCM_II_CNTL (controllers), BRCM_IR_VD (volume), BRCM_IR_PD and BRCM_IT_PD
// (drives behind a controller). The files of the collectors tell the fields.
#pragma once

// Collects from MegaRAID and SAS3008 controllers, onboard disks and, when raidCard3rdParty is 1 and
// the host has any of these, RAID cards. Prints and logs the records, uploads them (parameters 198
// and 199), raises drive events and reports missing drives. When there is no record, that is logged
// and nothing else happens. Returns 0. Collecting thread only.
int getSmartStorageUsage();
