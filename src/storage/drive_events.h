// Drive events: each drive record of a collection is compared with what is remembered of the
// drive, and what changed goes to the BMC's event log.
//
// A drive's records are keyed by their device path (onboard) or location (behind a controller).
// Until a family has told of all its drives once, a drive that is met raises only what is wrong
// with it from the start. Later a new drive and one that comes back also raise the deassertion of
// its absence, and a changed state raises what the new state asserts, then clears what the old one
// had asserted. The command log names new and returning drives. Collecting thread only.
#pragma once

#include "storage/storage_items.h"

// A pass over all items is enclosed by the next two. Marks every known drive unseen.
void resetDrivePresenceCheck();

// Reports every drive still unseen, once: onboard, then IT, then RAID drives, each in order of
// first appearance. A family of which the pass did not tell whole reports none.
void checkDrivePresence(const storage_items& items);

// Notes which families the pass has told of whole; part of checkDrivePresence.
void noteListedFamilies(const storage_items& items);

// Takes one normalised item to the handler of its tag; other records are ignored. Of several
// records of one place in a pass the first counts. `state_known` false: the drive is there, but
// what its record says of its health is no news. `certain` false: nor is that it is there, or
// where: half a line would be another drive.
void trackDrive(const list& item, bool state_known, bool certain = true);
