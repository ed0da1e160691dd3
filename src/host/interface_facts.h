// What ifconfig tells of the interfaces, for both network collectors. Where it does not tell, what
// it told before stays. Collecting thread, or one-shot process, only.
#pragma once

#include "host/interface_walk.h"

#include <set>
#include <string>
#include <vector>

struct interface_facts {
    std::vector<std::string> ipv6; // in ifconfig's order
    int speed = 0;                 // Mbit/s, 0 when the medium is unknown
    bool active = false;           // the media status
    bool link_up = false;          // configured up and active, when both were known last
    bool link_unsure = false;      // neither ifconfig nor the kernel tells now: no news
};

// Asks, unless that was done in this cycle, and takes over what is told of these interfaces.
void askInterfaces(const std::vector<interface_row>& rows);

// Every name that ifconfig told last.
const std::set<std::string>& listedInterfaces();

// Of an interface that nothing was ever told of: all empty. Valid until the next askInterfaces.
const interface_facts& factsOf(const std::string& name);
