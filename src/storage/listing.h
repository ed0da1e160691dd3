// What the collectors of controllers and volumes share: how far a listing is believed, and records
// that hold a list.
#pragma once

#include "tools/ask.h"

#include <string>
#include <string_view>
#include <vector>

// What a program that came to its end printed, whatever its exit status; empty for any other.
std::string_view printedText(const reply& answer);

// Whether what a program lists is all there is. `whole`: the text has the form of such an answer.
// False when the answer is not known, or has lost a form that those to `words` had before: what is
// not listed then is not missing, and what is listed is no news.
bool isWholeListing(const command_line& words, const reply& answer, bool whole);

// The record `start`, then the members, separated, then `end`. Those that no longer fit a line are
// left out whole from the end of the list.
std::string withList(std::string start, const std::vector<std::string>& members, char separator,
                     std::string_view end = "");
