// OS name and version, and the kind of storage that the monitor collects.
#pragma once

int getOSName();    // parameter 192; returns 0
int getOSVersion(); // parameter 193; returns 0

// 1 when the host has a software RAID volume (graid), else 0. Printed and logged, not uploaded.
int getHddType();
