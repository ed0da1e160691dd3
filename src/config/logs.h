// The log writers. Each call opens its file, writes one line, flushes and closes it; a file that
// can't be opened loses the line and nothing else. Any thread or process may call at any time.
#pragma once

#include <string>
#include <string_view>

#define VYN_FOLDER "/opt/norvik" // where all files of the agent live

extern const char* const log_file;  // main log: the values of the latest monitor cycle
extern const char* const hdd_file;  // drive map: serial number and slot of each drive
extern const char* const time_file; // start time of the service

// Main log, "title  value".
void printLog(std::string_view title, std::string_view value);
void printHexLog(std::string_view title, unsigned value);
void printIntLog(std::string_view title, int value);

// Dated error log, "[%Y/%m/%d %H:%M:%S] title  value" in local time.
void printErrLog(std::string_view title, std::string_view value);
void printErrIntLog(std::string_view title, int value);

// Dated command log, the same line format.
void printCommandLog(std::string_view title, std::string_view value);

// Drive map file, "title,value"; `first` 1 empties the file before.
void printHddMappingLog(std::string_view title, std::string_view value, int first);

// Begins the main log anew with the line "Time stamp -> %Y/%m/%d %H:%M:%S".
void restartLog();

// Opens a file under /opt/norvik with fopen's `mode`, closed on exec, writes `text`, flushes and
// closes it. False when it could not be opened or written.
bool writeFile(const char* name, const char* mode, std::string_view text);
