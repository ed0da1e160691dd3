#include "host/shell_operand.h"

namespace {

bool isPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("._:%,@+-/").find(c) != std::string_view::npos;
}

} // namespace

bool isPlainOperand(std::string_view text) {
    if (text.empty() || text.front() == '-')
        return false;
    for (const char c : text)
        if (!isPlain(c))
            return false;
    return true;
}

std::string shellOperand(std::string_view text) {
    if (isPlainOperand(text))
        return std::string(text);
    std::string operand = text.substr(0, 1) == "-" ? "-- '" : "'";
    for (const char c : text)
        if (c == '\'')
            operand += "'\\''";
        else
            operand += c;
    return operand + "'";
}
