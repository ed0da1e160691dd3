#include "storage/inventory.h"

#include "bmc/report.h"
#include "config/configuration.h"
#include "config/logs.h"
#include "state/flags.h"
#include "storage/drive_events.h"
#include "storage/megaraid.h"
#include "storage/onboard.h"
#include "storage/raid_card.h"
#include "storage/sas3008.h"
#include "text.h"
#include "tools/ask.h"

namespace {

constexpr const char* LABEL = "getSmartStorageUsage ->";
constexpr std::chrono::seconds PASS_SECONDS{300};

constexpr list_report REPORT = {"Storage items %d %d\n",
                                "Available:Total : ",
                                "Free Storage items count ->",
                                "Free Storage items ->",
                                PARM_STORAGE_COUNT,
                                PARM_STORAGE,
                                false,
                                replaceEmptyToNA};

void collect(storage_items& items) {
    const asking_limit limit(PASS_SECONDS, LABEL);
    collectMegaraid(items, LABEL);
    collectSas3008(items, LABEL);
    collectOnboard(items, LABEL);
    if (raidCard3rdParty != 1)
        return;
    if (items.head() == nullptr) { // they are not asked for
        items.listingUnknown(drive_kind::raid);
        return;
    }
    items.allowOneMore();
    collectRaidCards(items, LABEL);
}

} // namespace

int getSmartStorageUsage() {
    storage_items items;
    collect(items);
    if (stopRequested())
        return 0;
    if (items.head() == nullptr)
        printErrLog(LABEL, "command not found");
    showList(REPORT, items.head(), items.count());
    if (items.count() == 0) {
        noteListedFamilies(items);
        return 0;
    }
    resetDrivePresenceCheck();
    uploadList(REPORT, items.head(), items.count(), [&](const list& item, std::size_t place) {
        trackDrive(item, items.stateKnown(place), items.isCertain(place));
    });
    checkDrivePresence(items);
    return 0;
}
