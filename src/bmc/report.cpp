#include "bmc/report.h"

#include "config/logs.h"
#include "text.h"

#include <cstdio>

namespace {

std::string shown(const list_report& how, const list& item) {
    return how.numbered ? "(" + std::to_string(item.no) + ")" + item.parm : item.parm;
}

} // namespace

void reportValue(const value_report& how, const std::string& text) {
    std::printf("%s : %s\n", how.printed, text.c_str());
    printLog(how.logged, text);
    ipmiCmdSet(how.parm, text);
}

void showList(const list_report& how, list* head, int count) {
    const std::array<BYTE, 2> digits = itemCount(count);
    std::printf(how.count_printed, digits[1], digits[0]);
    for (list* item = head; item != nullptr; item = item->next) {
        if (how.normalise != nullptr) {
            std::string text = item->parm;
            how.normalise(text);
            copyText(item->parm, text);
        }
        std::printf("%s%s\n", how.item_printed, shown(how, *item).c_str());
    }
    if (how.count_logged != nullptr)
        printIntLog(how.count_logged, count);
}

void uploadList(const list_report& how, const list* head, int count,
                const std::function<void(const list& item, std::size_t place)>& handler) {
    if (count == 0)
        return;
    ipmiCmdSet(how.count_parm, itemCount(count));
    std::size_t place = 0;
    for (const list* item = head; item != nullptr; item = item->next) {
        if (handler != nullptr)
            handler(*item, place++);
        printLog(how.item_logged, shown(how, *item));
        ipmiCmdSet(how.item_parm, item->parm);
    }
}
