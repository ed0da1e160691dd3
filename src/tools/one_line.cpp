#include "tools/one_line.h"

std::string parseOneLine(std::string_view text) {
    constexpr std::size_t MOST = 255;
    text = text.substr(0, MOST);
    const std::size_t end = text.find('\n');
    return std::string(text.substr(0, end == text.npos ? end : end + 1));
}

std::string lineOf(const reply& answer) {
    const bool whole = answer.succeeded() || (answer.end == program_end::exited &&
                                              answer.text.find('\n') != answer.text.npos);
    return whole ? parseOneLine(answer.text) : "";
}
