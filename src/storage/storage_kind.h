// The kind of storage that the monitor collects.
#pragma once

// 1 when the host has a software RAID volume (graid), else 0. Printed and logged, not uploaded.
// Collecting thread only.
int getHddType();
