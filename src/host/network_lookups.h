// What the tools tell about an interface. Every function returns its text, at most 256 characters,
// empty when the tool can't be run or prints nothing. No lock is taken; each runs a command and
// waits for it, within the deadline of shell.h.
#pragma once

#include <string>

std::string getIPv6(const std::string& iface); // addresses joined by ","
// The gateway of the IPv6 route that mentions this text, which getIPv6 gave; empty for an empty
// one.
std::string getGateway(const std::string& ipv6);
std::string getFQDN();                        // an empty name is reported in the error log
std::string getDNS(const std::string& iface); // joined by ","; only while the media is active
// Vendor and device names of the adapter. A command that can't be run goes to the error log.
std::string getDescription(const std::string& iface);
std::string getMediaStatus(const std::string& iface); // "active" on a working link
