// Drive events: each drive record of a collection is compared with what is remembered of the
// drive, and what changed goes to the BMC's event log.
//
// A drive's records are keyed by their device path (onboard) or location (behind a controller).
// The first pass (static_first_init 1) makes a node of every record and raises only what is wrong
// with the drive from the start. Later a new drive and one that comes back also raise the
// deassertion of its absence, and a changed state raises what the new state asserts, then clears
// what the old one had asserted. The command log names new and returning drives. Nothing depends
// on whether the BMC took an event.
#pragma once

#include "system_info.h"

// A record has at most 18 fields between ";" and ":"; further ones are ignored.
constexpr std::size_t STORAGE_RECORD_FIELDS = 18;

// Each takes one normalised storage item and ignores records whose tag is not its own. Called
// from the collecting thread only. A node that can't be allocated ends the process with status 1.
void addStorageSELRecord(const list* item);       // HD: onboard drives and RSTe members
void addStorage3008ITSELRecord(const list* item); // BRCM_IT_PD: SAS3008 in IT mode
void addStorageRaidSELRecord(const list* item);   // BRCM_IR_PD: SAS3008 in IR mode, RAID cards
