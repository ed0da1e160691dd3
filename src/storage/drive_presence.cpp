#include "storage/drive_presence.h"

#include "bmc/events.h"
#include "config/logs.h"
#include "storage/drive_state.h"
#include "text.h"

namespace {

// What is told of a missing drive of one list.
template <class Node>
struct missing_report {
    Node*& head;
    int type; // nodes of another type are left alone
    BYTE sensor;
    // `previous` holds the bytes of the drive reported before, zeros for the first.
    drive_bytes (*bytes)(const Node& node, drive_bytes previous);
    const char* text;
    bool log_before_event;
};

// An index that is not a number leaves the byte of the drive reported before.
drive_bytes onboardMissing(const hdd_list& node, drive_bytes previous) {
    return {static_cast<BYTE>(leadingInteger(node.index, previous.event2)), 0xFF};
}

drive_bytes controllerMissing(const hdd_3008_list& node, drive_bytes) {
    return itDriveBytes(node.controller, node.enclosure, node.slot);
}

const missing_report<hdd_list> ONBOARD = {
    g_hdd_head, drive_type_onboard, onboard_sensor_num, onboardMissing, "HDD missing", true,
};

const missing_report<hdd_3008_list> IT = {
    g_3008_it_hdd_head, drive_type_controller,    sas3008_it_pd_sensor_num,
    controllerMissing,  "3008 IT device missing", false,
};

// A missing RAID drive speaks with the sensor and the bytes of an IT drive, unlike its other
// events.
const missing_report<hdd_3008_list> RAID = {
    g_raid_hdd_head,   drive_type_controller, sas3008_it_pd_sensor_num,
    controllerMissing, "Raid device missing", false,
};

template <class Node>
void markUnseen(Node* head) {
    for (Node* node = head; node != nullptr; node = node->next)
        node->checked = 1;
}

template <class Node>
void reportMissing(const missing_report<Node>& report) {
    drive_bytes bytes{};
    for (Node* node = report.head; node != nullptr; node = node->next) {
        if (node->type != report.type || node->checked != 1 || node->presence != 0)
            continue;
        node->presence = 1;
        bytes = report.bytes(*node, bytes);
        if (report.log_before_event)
            printCommandLog("checkDrivePresence", report.text);
        sendDriveEvent(report.sensor, alert_assert, event_presence, bytes);
        if (!report.log_before_event)
            printCommandLog("checkDrivePresence", report.text);
    }
}

} // namespace

void resetDrivePresenceCheck() {
    markUnseen(g_hdd_head);
    markUnseen(g_3008_it_hdd_head);
    markUnseen(g_raid_hdd_head);
}

void checkDrivePresence() {
    reportMissing(ONBOARD);
    reportMissing(IT);
    reportMissing(RAID);
}
