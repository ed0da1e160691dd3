// Detection of a BMC restart by the restart-clean flag (OEM command 0x30/0x70, 0xA9).
#pragma once

// Thread body: once a minute, unless paused, asks for the static pass when the BMC has restarted.
void* bmc_restart_monitor_handler(void* arg);
