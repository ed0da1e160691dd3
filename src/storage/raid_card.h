// RAID cards of the makers named in the configuration, their volumes and their drives, by way of
// storcli.
//
// Records, N being storcli's number of the card:
//   BRCM_IR_CNTL; index; N; product; BIOS; firmware; device interface
//     the first card has no index, the next ones 1, 2 ...
//   BRCM_IR_VD; volume number; name in the system; health; state; level; size; members
//   BRCM_IR_PD; place among the drives; WWN: health: state: serial: firmware; CNEeSs; medium; N/A;
//     model; size
// A volume's health is OK or PredictiveFailureAnalysis, a drive's OK or Fail.
#pragma once

#include "storage/storage_items.h"
#include "tools/storcli.h"

#include <string>
#include <string_view>
#include <vector>

// Adds them. Drives of a card that could not be listed are not missing for that; a drive whose
// details could not be had is told without them. A storcli that could not be started is logged
// under `label`, once.
void collectRaidCards(storage_items& items, const char* label);

// The pattern of the setting raidCards as it stands between the quotes of its line in the
// configuration file, blanks joined.
std::string parseCardPattern(std::string_view configuration);

// The numbers of the controllers whose line matches an extended regular expression, upper and
// lower case alike. A pattern that is none, or whose time has no bound, selects nothing.
std::vector<std::string> selectCards(const storcli_listing& listing, const std::string& pattern);
