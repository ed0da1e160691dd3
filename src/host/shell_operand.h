// Kernel names and addresses as operands of a command line.
#pragma once

#include <string>
#include <string_view>

// True when every character is a letter, a digit or one of . _ : % , @ + - / and the first is not
// "-": such a text stands for itself on a command line and in a grep pattern.
bool isPlainOperand(std::string_view text);

// The text as one operand that the shell does not evaluate: as it stands when it is plain, else in
// single quotes, after "-- " when it would be taken for an option.
std::string shellOperand(std::string_view text);
