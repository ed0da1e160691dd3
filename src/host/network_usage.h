// Network utilisation per interface.
#pragma once

// Samples every interface's byte count; with sendCmd 1 uploads the mean utilisation (parameters
// 200 and 201) and starts afresh. Any thread. Returns 0.
int getNetworkUsage(int sendCmd);
