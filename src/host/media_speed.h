// Link speed of an interface, from the media words of ifconfig.
#pragma once

#include <string>
#include <string_view>

// Mbit/s of a media word, 0 when it is unknown. 10 and 40 gigabit are 10240 and 40960.
int getSpeedMB(std::string_view buffer);

// Mbit/s of an interface by the two media pipelines, 0 when neither gives a known word.
int linkSpeed(const std::string& ifname);
