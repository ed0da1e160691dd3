// Text helpers of every collector: normalising, trimming, splitting, bounded copies.
#pragma once

#include "system_info.h"

#include <array>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

// Fills every empty field between two separators with "N/A": the substitutions ";;" -> ";N/A;",
// ";:" -> ";N/A:", ":;" -> ":N/A;", "::" -> ":N/A:", in this order, each applied twice over the
// whole text from left to right without overlap. The result is cut to 511 characters; a text that
// holds a newline ends there.
void replaceEmptyToNA(std::string& data);
// The same without the last substitution, for records that carry IPv6 addresses.
void replaceEmptyToNAExceptDoubleColon(std::string& data);

// Whitespace-normalises in place and returns the text: no leading or trailing white space, each
// inner run of it one blank. White space: blank, tab, newline, vertical tab, form feed, return.
std::string& trim(std::string& text);

// Splits at every character of `separators`, empty pieces kept; an empty text is one empty piece.
// Pieces beyond `most` are dropped.
std::vector<std::string> splitFields(std::string_view text, std::string_view separators,
                                     std::size_t most);

// Copies into a fixed field, cut to its size less the terminator.
template <std::size_t N>
void copyText(char (&field)[N], std::string_view text) {
    const std::size_t length = text.size() < N ? text.size() : N - 1;
    std::memcpy(field, text.data(), length);
    field[length] = '\0';
}

// Removes one newline at the end, if there is one. Returns whether there was.
bool dropNewline(std::string& line);

// The leading decimal integer of a text as scanf's %d reads it (blanks and a sign first), clamped
// to int; `fallback` when there is none.
int leadingInteger(std::string_view text, int fallback);

// The two raw bytes that announce a number of records: count mod 255, then count / 255.
std::array<BYTE, 2> itemCount(int count);
