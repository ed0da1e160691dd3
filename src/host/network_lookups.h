// What tools and files tell about an interface beside its own state. Every function returns its
// text, at most 256 characters, empty when nothing is known. Collecting thread, or one-shot
// process, only.
#pragma once

#include "host/interface_walk.h"

#include <string>
#include <vector>

// Asks, unless that was done in this cycle, for everything that the functions below tell of these
// interfaces. What is not told now stays as it was told last.
void askNetworkTools(const std::vector<interface_row>& rows);

std::string getIPv6(const std::string& iface); // addresses joined by ","
// The gateway of the IPv4 default route through the interface; else that of the IPv6 default
// route; else that of the first IPv6 route that carries one of its addresses.
std::string getGateway(const std::string& iface);
std::string getFQDN();                                // an empty name is reported in the error log
std::string getDNS(const std::string& iface);         // joined by ","; only while it is active
std::string getDescription(const std::string& iface); // vendor and device name of the adapter
