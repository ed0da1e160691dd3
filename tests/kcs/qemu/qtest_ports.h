// The I/O ports of a QEMU machine that speaks qtest, in place of the simulated platform's.
#pragma once

#include "kcs/qemu/line_child.h"

// Ports float while there is no machine (null).
void usePortsOf(line_child* qemu);
