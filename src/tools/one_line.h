// Programs whose answer is one line: "uname", "uname -r -p" and "hostname".
#pragma once

#include <string>
#include <string_view>

// The first line, at most 255 characters of it with its newline.
std::string parseOneLine(std::string_view text);
