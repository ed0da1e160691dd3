// Programs whose answer is one line: "uname", "uname -r -p" and "hostname".
#pragma once

#include "tools/ask.h"

#include <string>
#include <string_view>

// The first line, at most 255 characters of it with its newline.
std::string parseOneLine(std::string_view text);

// The line of an answer. Of a program that hung or failed half a line is none.
std::string lineOf(const reply& answer);
