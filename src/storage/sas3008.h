// SAS3008 controllers, their volumes and their drives, by way of sas3ircu.
//
// Records, M being the place of the controller among those listed, from 0:
//   BRCM_IR_CNTL (IR mode) and BRCM_II_CNTL (IT mode); M; number; type; BIOS; firmware; channel
//     description
//   BRCM_IR_VD; 323 - volume ID; M-volume ID; health; status; level; GiB; members
//   BRCM_IR_PD and BRCM_IT_PD; place among the drives; N/A: health: state: serial: firmware;
//     CmEeSs; kind; N/A; manufacturer model; GiB
// A volume's health is OK, PredictiveFailureAnalysis, Fail, Miss or N/A; a drive's OK,
// PredictiveFailureAnalysis, Fail, Missing, Standby or N/A.
#pragma once

#include "storage/storage_items.h"

// Adds them. Drives of a controller that could not be listed are not missing for that, and what is
// told of them is no news.
void collectSas3008(storage_items& items, const char* label);
