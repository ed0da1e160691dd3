#include "storage/storage_items.h"

#include "bmc/parameter_upload.h"
#include "config/logs.h"
#include "text.h"

#include <cstdio>

namespace {

// Appends a piece of the output; returns whether it ends a line.
bool appendPiece(storage_items& items, std::string& piece) {
    const bool complete = dropNewline(piece);
    if (complete)
        piece += ';';
    list* item = appendNode(items.head, items.prev);
    copyText(item->parm, piece);
    ++items.total;
    if (complete)
        item->no = items.count++;
    return complete;
}

} // namespace

script_result readItems(storage_items& items, const char* script, const char* label,
                        int deadline_s) {
    shell_capture shell(script, label, deadline_s);
    if (!shell.started())
        return script_result::not_started;
    const int before = items.total;
    std::string piece;
    while (shell.readPiece(piece)) {
        const bool line_read = appendPiece(items, piece);
        if (items.total >= STORAGE_ITEMS_MOST || (line_read && items.count >= STORAGE_LINES_MOST))
            break;
    }
    items.timed_out = items.timed_out || shell.timedOut();
    return items.total > before ? script_result::printed : script_result::nothing_printed;
}

void showItems(storage_items& items, const collector_texts& texts) {
    const std::array<BYTE, 2> count = itemCount(items.count);
    std::printf("%s %d %d\n", texts.count_print, count[1], count[0]);
    for (list* item = items.head; item != nullptr; item = item->next) {
        std::string text = item->parm;
        replaceEmptyToNA(text);
        copyText(item->parm, text);
        std::printf("%s : %s\n", texts.item_print, item->parm);
    }
    printIntLog(texts.count_log, items.count);
}

void uploadItemCount(const storage_items& items) {
    ipmiCmdSet(PARM_STORAGE_COUNT, itemCount(items.count));
}

void uploadItem(const list& item, const collector_texts& texts) {
    printLog(texts.item_log, item.parm);
    ipmiCmdSet(PARM_STORAGE, item.parm);
}
