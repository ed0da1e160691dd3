// OS name and version.
#pragma once

int getOSName();    // parameter 192; returns 0
int getOSVersion(); // parameter 193; returns 0
