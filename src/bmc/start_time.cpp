#include "bmc/start_time.h"

#include "bmc/time_stamp.h"
#include "config/logs.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace {

constexpr std::size_t SECOND_LINE_SIZE = 1 + 2 * TIME_STAMP_SIZE; // with the newline before it

} // namespace

void setStartTime() {
    getTimeStamp(mTimeStamp);
    std::string text = reinterpret_cast<const char*>(mTimeStamp);
    text += '\n';
    for (int i = 0; i < TIME_STAMP_SIZE; ++i) {
        char hex[4];
        std::snprintf(hex, sizeof hex, "%2x", mTimeStamp[i]);
        text += hex;
    }
    writeFile(time_file, "w+", text);
}

void getStartTime() {
    std::FILE* file = std::fopen(time_file, "re");
    if (file == nullptr)
        return;
    char content[TIME_STAMP_SIZE + SECOND_LINE_SIZE];
    std::size_t length = std::fread(content, 1, sizeof content, file);
    std::fclose(file);
    if (length < SECOND_LINE_SIZE) // cut by a full disk: what is known is better
        return;

    // The second line's length is known, so the newline that ends the first can be told from a
    // newline among the raw bytes; a text that holds one is taken up to it.
    length -= SECOND_LINE_SIZE;
    char* newline = std::find(content, content + length, '\n');
    length = std::min<std::size_t>(length, static_cast<std::size_t>(newline - content) + 1);
    std::fill(std::begin(mTimeStamp), std::end(mTimeStamp), BYTE{0});
    std::transform(content, content + length, mTimeStamp,
                   [](char c) { return static_cast<BYTE>(c); });
}
