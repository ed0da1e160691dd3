// Link speeds by the media words of ifconfig.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// Mbit/s of a media word, 0 when it is unknown. A gigabit is 1024 from 10 gigabit on.
int getSpeedMB(std::string_view buffer);

// Mbit/s of the first known word, 0 when none is.
int linkSpeed(const std::vector<std::string>& media);
