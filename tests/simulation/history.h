// The making of a server, and what happens to it.
#pragma once

#include "world.h"

namespace sim {

World makeWorld(std::uint64_t seed);

// Counters rise, memory is taken and given back.
void liveOn(World& world, Dice& dice);

// One of the things that happen to a server. Tells it, or nothing when it doesn't apply.
std::string changeWorld(World& world, Dice& dice);

} // namespace sim
