#include "storage/inventory.h"

#include "config/configuration.h"
#include "config/logs.h"
#include "inventory_script.h"
#include "raid_card_script.h"
#include "storage/drive_events.h"
#include "storage/drive_presence.h"
#include "storage/storage_items.h"

namespace {

constexpr collector_texts TEXTS = {
    "getSmartStorageUsage ->",     "Storage items",         "Available:Total",
    "Free Storage items count ->", "Free Storage items ->",
};

// Both scripts' output; false when there is none or a script could not be started.
bool collect(storage_items& items) {
    if (readItems(items, inventory_script, TEXTS.label) != script_result::printed)
        return false;
    return raidCard3rdParty != 1 ||
           readItems(items, raid_card_script, TEXTS.label) != script_result::not_started;
}

} // namespace

int getSmartStorageUsage() {
    storage_items items;
    if (!collect(items))
        printErrLog(TEXTS.label, "command not found");
    showItems(items, TEXTS);
    if (items.count == 0)
        return 0;
    uploadItemCount(items);
    resetDrivePresenceCheck();
    for (const list* item = items.head; item != nullptr; item = item->next) {
        addStorageSELRecord(item);
        addStorage3008ITSELRecord(item);
        addStorageRaidSELRecord(item);
        uploadItem(*item, TEXTS);
    }
    // A pass that a hung tool cut short says nothing of the drives behind it.
    if (!items.timed_out)
        checkDrivePresence();
    return 0;
}
