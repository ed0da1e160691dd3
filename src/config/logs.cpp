#include "config/logs.h"

#include <cstdio>
#include <ctime>

const char* const log_file = VYN_FOLDER "/vyn.log";
const char* const hdd_file = VYN_FOLDER "/vyn.hdd.ini";
const char* const time_file = VYN_FOLDER "/starttime.log";

namespace {

constexpr const char* ERROR_LOG_NAME = VYN_FOLDER "/vyn.err.log-%Y%m%d";
constexpr const char* COMMAND_LOG_NAME = VYN_FOLDER "/vyn.com.log-%Y%m%d";
constexpr const char* TIME_FORMAT = "%Y/%m/%d %H:%M:%S";

std::string localTime(const std::tm& now, const char* format) {
    char text[100];
    return std::string(text, std::strftime(text, sizeof text, format, &now));
}

std::tm currentTime() {
    const std::time_t seconds = std::time(nullptr);
    std::tm now{};
    localtime_r(&seconds, &now);
    return now;
}

std::string line(std::string_view title, std::string_view between, std::string_view value) {
    std::string text(title);
    return text.append(between).append(value).append("\n");
}

// One reading of the clock serves the file's name and the line.
void printDatedLog(const char* name, std::string_view title, std::string_view value) {
    const std::tm now = currentTime();
    writeFile(localTime(now, name).c_str(), "a+",
              "[" + localTime(now, TIME_FORMAT) + "] " + line(title, "  ", value));
}

} // namespace

bool writeFile(const char* name, const char* mode, std::string_view text) {
    std::FILE* file = std::fopen(name, (std::string(mode) + "e").c_str());
    if (file == nullptr)
        return false;
    const bool written =
        std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
    return std::fclose(file) == 0 && written;
}

void printLog(std::string_view title, std::string_view value) {
    writeFile(log_file, "a+", line(title, "  ", value));
}

void printHexLog(std::string_view title, unsigned value) {
    char text[16];
    std::snprintf(text, sizeof text, "%x", value);
    printLog(title, text);
}

void printIntLog(std::string_view title, int value) {
    printLog(title, std::to_string(value));
}

void printErrLog(std::string_view title, std::string_view value) {
    printDatedLog(ERROR_LOG_NAME, title, value);
}

void printErrIntLog(std::string_view title, int value) {
    printErrLog(title, std::to_string(value));
}

void printCommandLog(std::string_view title, std::string_view value) {
    printDatedLog(COMMAND_LOG_NAME, title, value);
}

void printHddMappingLog(std::string_view title, std::string_view value, int first) {
    writeFile(hdd_file, first == 1 ? "w+" : "a+", line(title, ",", value));
}

void restartLog() {
    writeFile(log_file, "w+", "Time stamp -> " + localTime(currentTime(), TIME_FORMAT) + "\n");
}
