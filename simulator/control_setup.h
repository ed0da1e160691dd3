// Commands that change what the BMC is or does.
#pragma once

#include "bmc.h"

namespace bmcsim {

struct CommandLine {
    std::vector<std::string> words; // without the command's name
    std::string rest;               // the same as it stands
};

// Each returns an error text, empty when it is done.
std::string setupPost(Bmc& bmc, const CommandLine& line);
std::string setupPostRaw(Bmc& bmc, const CommandLine& line);
std::string setupUnpost(Bmc& bmc, const CommandLine& line);
std::string setupFault(Bmc& bmc, const CommandLine& line);
std::string setupAnswer(Bmc& bmc, const CommandLine& line);
std::string setupDelay(Bmc& bmc, const CommandLine& line);
std::string setupNoFault(Bmc& bmc, const CommandLine& line);
std::string setupWatchdog(Bmc& bmc, const CommandLine& line);
std::string setupIpmi(Bmc& bmc, const CommandLine& line);
std::string setupClock(Bmc& bmc, const CommandLine& line);
std::string setupFlag(Bmc& bmc, const CommandLine& line);
std::string setupCapacity(Bmc& bmc, const CommandLine& line);
std::string setupFile(Bmc& bmc, const CommandLine& line);
std::string setupCapability(Bmc& bmc, const CommandLine& line);
std::string setupDriveMap(Bmc& bmc, const CommandLine& line);
std::string setupNvme(Bmc& bmc, const CommandLine& line);

} // namespace bmcsim
