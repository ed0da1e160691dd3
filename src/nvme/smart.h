// Health of every NVMe controller.
#pragma once

// Collects and uploads (parameters 205 and 206). Returns 0; a device that can't be opened or that
// fails a command ends the process with status 1.
int getNVMeSMARTInfo();
