#include "storage/storage_items.h"

#include "text.h"

#include <algorithm>

storage_items::~storage_items() {
    freeNodes(m_head, m_prev);
}

void storage_items::add(std::string_view record, bool state_known, bool certain) {
    if (full())
        return;
    for (bool complete = false; !complete;) {
        const std::string_view piece = record.substr(0, STORAGE_LINE_MOST + 1);
        complete = piece.size() <= STORAGE_LINE_MOST;
        record.remove_prefix(piece.size());
        list* item = appendNode(m_head, m_prev);
        copyText(item->parm, complete ? std::string(piece) + ";" : std::string(piece));
        m_state_known.push_back(state_known);
        m_certain.push_back(certain);
        if (complete)
            item->no = m_count++;
    }
}
