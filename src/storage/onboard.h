// Onboard disks: those that geom lists and that answer camcontrol as ATA disks do, each followed by
// its partitions. What is not known in a field is "N/A" in the end.
//
// HD;/dev/DISK:health:serial:firmware;drive index;USB, SSD or HDD;rpm (HDD only);controller;model;
//     GiB;cylinders;sectors;tracks;heads;USB, SCSI or IDE;temperature
// PT;/dev/PARTITION:percent used:used:available:total:block size:      (bytes)
#pragma once

#include "storage/storage_items.h"

// Adds the records. A disk that was reported and does not answer any more is reported with what is
// still known of it, while geom lists it; so are all disks while geom itself does not answer.
// `label` stands before "timed out" in the error log. Collecting thread only.
void collectOnboard(storage_items& items, const char* label);
