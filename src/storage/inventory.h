// The storage inventory: every disk, partition, controller, volume and drive as one record.
#pragma once

// Collects, uploads (parameters 198 and 199), raises drive and presence events. Returns 0.
int getSmartStorageUsage();
