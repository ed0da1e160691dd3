#include "storage/listing.h"

#include "storage/storage_items.h"

#include <set>

std::string_view printedText(const reply& answer) {
    return answer.end == program_end::exited ? std::string_view(answer.text) : std::string_view();
}

bool isWholeListing(const command_line& words, const reply& answer, bool whole) {
    static std::set<command_line> whole_before;
    if (!answer.known)
        return false;
    if (whole)
        whole_before.insert(words);
    return whole || whole_before.count(words) == 0;
}

std::string withList(std::string start, const std::vector<std::string>& members, char separator,
                     std::string_view end) {
    bool first = true;
    for (const std::string& member : members) {
        if (start.size() + !first + member.size() + end.size() > STORAGE_LINE_MOST)
            break;
        if (!first)
            start += separator;
        start += member;
        first = false;
    }
    return start.append(end);
}
