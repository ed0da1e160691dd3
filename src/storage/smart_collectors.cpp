#include "storage/smart_collectors.h"

#include "bmc/report.h"
#include "config/logs.h"
#include "state/flags.h"
#include "storage/drive_events.h"
#include "storage/megaraid.h"
#include "storage/rste.h"
#include "text.h"
#include "tools/ask.h"

namespace {

constexpr std::chrono::seconds PASS_SECONDS{300};

struct smart_collector {
    const char* label; // of its lines in the error log
    void (*collect)(storage_items& items, const char* label);
    list_report report;
};

constexpr smart_collector LSI = {"LSI smart ->",
                                 collectLsi,
                                 {"LSI items %d %d\n", "LSI : ", "LSI smart items count ->",
                                  "LSI smart items ->", PARM_STORAGE_COUNT, PARM_STORAGE, false,
                                  replaceEmptyToNA}};

constexpr smart_collector INTEL_RSTE = {
    "Intel RSTe smart ->",
    collectRste,
    {"Intel RSTe items %d %d\n", "Intel RSTe : ", "Intel RSTe smart items count ->",
     "Intel RSTe smart items ->", PARM_STORAGE_COUNT, PARM_STORAGE, false, replaceEmptyToNA}};

// Returns whether there is something to raise events of.
bool run(const smart_collector& collector, storage_items& items) {
    {
        const asking_limit limit(PASS_SECONDS, collector.label);
        collector.collect(items, collector.label);
    }
    if (stopRequested())
        return false;
    if (items.head() == nullptr)
        printErrLog(collector.label, "command not found");
    showList(collector.report, items.head(), items.count());
    uploadList(collector.report, items.head(), items.count());
    return items.count() > 0;
}

} // namespace

int getSmartLSI() {
    storage_items items;
    run(LSI, items);
    return 0;
}

int getSmartIntelRSTe() {
    storage_items items;
    if (!run(INTEL_RSTE, items))
        return 0;
    resetDrivePresenceCheck();
    std::size_t place = 0;
    for (const list* item = items.head(); item != nullptr; item = item->next, ++place)
        trackDrive(*item, items.stateKnown(place), items.isCertain(place));
    noteListedFamilies(items);
    return 0;
}
