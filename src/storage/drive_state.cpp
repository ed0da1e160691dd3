#include "storage/drive_state.h"

#include "bmc/events.h"

hdd_list *g_hdd_head, *g_hdd_prev, *g_hdd_current;
hdd_3008_list *g_3008_it_hdd_head, *g_3008_it_hdd_prev, *g_3008_it_hdd_current;
hdd_3008_list *g_raid_hdd_head, *g_raid_hdd_prev, *g_raid_hdd_current;

drive_bytes itDriveBytes(int controller, int enclosure, int slot) {
    const unsigned place =
        (static_cast<unsigned>(controller) << 6) + (static_cast<unsigned>(enclosure) & 0x3F);
    return {static_cast<BYTE>(slot), static_cast<BYTE>(place)};
}

drive_bytes raidDriveBytes(int controller, int slot) {
    const unsigned place =
        (static_cast<unsigned>(controller) << 4) + (static_cast<unsigned>(slot) & 0x0F);
    return {static_cast<BYTE>(place), 0xFF};
}

void sendDriveEvent(BYTE sensor, BYTE alert, BYTE event_type, drive_bytes bytes) {
    selRecord record;
    record.sensor_type = sensor_type_drive;
    record.sensor_num = sensor;
    record.alert_type = alert;
    record.event_type = event_type;
    record.event2 = bytes.event2;
    record.event3 = bytes.event3;
    sendSmartSEL(record);
}
