#include "storage/smart_collectors.h"

#include "config/logs.h"
#include "lsi_script.h"
#include "rste_script.h"
#include "storage/drive_events.h"
#include "storage/storage_items.h"

namespace {

struct smart_collector {
    const char* script;
    collector_texts texts;
    void (*event_handler)(const list* item); // gets every item after the uploads; may be null
};

const smart_collector LSI = {
    lsi_script,
    {"LSI smart ->", "LSI items", "LSI", "LSI smart items count ->", "LSI smart items ->"},
    nullptr,
};

const smart_collector INTEL_RSTE = {
    rste_script,
    {"Intel RSTe smart ->", "Intel RSTe items", "Intel RSTe", "Intel RSTe smart items count ->",
     "Intel RSTe smart items ->"},
    addStorageSELRecord,
};

int run(const smart_collector& collector) {
    storage_items items;
    if (readItems(items, collector.script, collector.texts.label) != script_result::printed)
        printErrLog(collector.texts.label, "command not found");
    showItems(items, collector.texts);
    if (items.count == 0)
        return 0;
    uploadItemCount(items);
    for (const list* item = items.head; item != nullptr; item = item->next)
        uploadItem(*item, collector.texts);
    if (collector.event_handler != nullptr)
        for (const list* item = items.head; item != nullptr; item = item->next)
            collector.event_handler(item);
    return 0;
}

} // namespace

int getSmartLSI() {
    return run(LSI);
}

int getSmartIntelRSTe() {
    return run(INTEL_RSTE);
}
