// Platform event records for the BMC's event log (IPMI v2.0, 29.3 "Platform Event Message").
//
#pragma once

#include "system_info.h"

constexpr BYTE sensor_type_drive = 0x0D;
constexpr BYTE sensor_type_network = 0xD0;
constexpr BYTE onboard_sensor_num = 0xFF; // onboard drives and network records
constexpr BYTE sas3008_pd_sensor_num = 0xFF;
constexpr BYTE sas3008_it_pd_sensor_num = 0x5F;
constexpr BYTE alert_assert = 0x70;
constexpr BYTE alert_deassert = 0xF0;
constexpr BYTE alert_network = 0x6F;
constexpr BYTE link_up = 0xA1;
constexpr BYTE link_down = 0xA2;
constexpr BYTE event_presence = 0xA0;
constexpr BYTE event_fault = 0xA1;
constexpr BYTE event_predictive = 0xA2;
constexpr BYTE event_hot_spare = 0xA3;
constexpr BYTE event_out_of_sync = 0xA5;
constexpr BYTE event_failed_array = 0xA6;
constexpr BYTE event_rebuild = 0xA7;

// The request data of one event, as they are sent.
struct selRecord {
    BYTE generator = 0x41;
    BYTE revision = 0x04;
    BYTE sensor_type = 0;
    BYTE sensor_num = 0xFF;
    BYTE alert_type = 0;
    BYTE event_type = 0;
    BYTE event2 = 0;
    BYTE event3 = 0xFF;
};
static_assert(sizeof(selRecord) == 8);

// Send one record. Return 0 when the BMC took it, else 1; the command log or the error log tells,
// unless the BMC was away before and nothing was sent. Nothing is retried here: what was not taken
// is the caller's to tell again.
int sendLanSEL(const selRecord& record);
int sendSmartSEL(const selRecord& record);
