// The configuration file /opt/norvik/vyn.ini, in libconfig syntax.
#pragma once

#include <atomic>
#include <string>

extern const char* const ini_file;

extern std::atomic<int> updateSec; // seconds between two monitor cycles, 1 to 60; 0 before initIni
extern int nicStatusSel;           // 1: link events are sent
extern int intelRSTeVROC;     // 1: the RSTe collector runs on hosts with a software RAID volume
extern int raidCard3rdParty;  // 1: the RAID-card script runs
extern std::string raidCards; // pattern of RAID card names; the collector reads it from the file

// Reads the settings, or writes a new file with the defaults when the file is missing or can't be
// parsed. Returns 0, or 1 when a new file could not be written (standard error and the error log
// tell). updateSec is clamped to 1..60.
int initIni();

// Sets updateSec to `seconds`, clamped to 1..60, and updateFreq in the file when that can be read:
// a link is followed, mode and owner stay. A failed write prints "Error while writing file." to
// standard error.
void setUpdateFreq(int seconds);
