// Missing drives: a pass over all items is enclosed by these two; a drive that no handler of the
// pass has seen is reported missing once. Collecting thread only.
#pragma once

// Marks every known drive unseen.
void resetDrivePresenceCheck();

// Reports every drive still unseen: onboard, then IT, then RAID drives, each in order of first
// appearance. The event handlers report their return.
void checkDrivePresence();
