// Text helpers of every collector: normalising, trimming, splitting, bounded copies.
#pragma once

#include "system_info.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Fills every empty field between two separators with "N/A": the substitutions ";;" -> ";N/A;",
// ";:" -> ";N/A:", ":;" -> ":N/A;", "::" -> ":N/A:", in this order, each applied twice over the
// whole text from left to right without overlap. The result is cut to 511 characters; a text that
// holds a newline ends there.
void replaceEmptyToNA(std::string& data);
// The same without the last substitution, for records that carry IPv6 addresses: "::" stays as it
// is, at the edge of a field (";::1;") as well.
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

// ---- Reading what tools print: everything here takes any bytes
// -----------------------------------

constexpr std::size_t LINE_MOST = 2000; // characters of a line that are looked at

// Takes the next line, without its newline and cut to LINE_MOST, off the front of `rest`. False
// when nothing is left:  for (std::string_view line, rest = text; nextLine(rest, line);)
bool nextLine(std::string_view& rest, std::string_view& line);

// Takes the next word, a run of characters other than blank and tab, off the front of `rest`; empty
// when there is none.
std::string_view nextWord(std::string_view& rest);
// Word `number` of a line, from 0; empty when it has fewer.
std::string_view wordOf(std::string_view line, std::size_t number);
std::vector<std::string_view> wordsOf(std::string_view line);

// Without the blanks and tabs at both ends.
std::string_view trimmed(std::string_view text);

// Upper and lower case alike (ASCII): equality, and whether `text` holds `part`.
bool sameText(std::string_view text, std::string_view other);
bool holdsText(std::string_view text, std::string_view part);

// What stands before and behind the first `mark`, both trimmed; empty when there is no mark.
std::string_view before(std::string_view text, std::string_view mark);
std::string_view behind(std::string_view text, std::string_view mark);

// What a "label : value" line says of a label (upper and lower case alike, blanks before a "#" of
// the line's label left out), trimmed; nothing for another line.
std::optional<std::string_view> labelled(std::string_view line, std::string_view label);

// A record's field: the text without ";" and ":", which separate fields, trimmed. solid() leaves
// out blanks and tabs as well.
std::string bare(std::string_view text);
std::string solid(std::string_view text);

// The number that all of a text says in decimal digits; nothing for another text, or one that 64
// bits can't hold.
std::optional<std::uint64_t> wholeNumber(std::string_view text);
// The digits that follow the first `mark` that is followed by any; empty when there is none.
std::string_view digitsBehind(std::string_view text, std::string_view mark);

// Removes one newline at the end, if there is one. Returns whether there was.
bool dropNewline(std::string& line);

// The leading decimal integer of a text as scanf's %d reads it (blanks and a sign first), clamped
// to int; `fallback` when there is none.
int leadingInteger(std::string_view text, int fallback);

// Lengths, offsets and counts travel to the BMC as two digits of this base, the low one first.
constexpr int COUNT_BASE = 255;
// The two raw bytes that announce a number of records.
std::array<BYTE, 2> itemCount(int count);
