// Platform event records for the BMC's event log (IPMI v2.0, 29.3 "Platform Event Message").
//
// Record, 8 bytes: generator 0x41, revision 0x04, sensor type, sensor number, alert type, event
// type, event2, event3.
#pragma once

#include "system_info.h"

constexpr int EVENT_RECORD_SIZE = 8;

constexpr BYTE EVENT_GENERATOR = 0x41;
constexpr BYTE EVENT_REVISION = 0x04;
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

// Send one record of EVENT_RECORD_SIZE bytes. Return 0 when the BMC took it, else 1; either way
// the command log or the error log tells. Nothing is retried.
int sendLanSEL(const BYTE* record);
int sendSmartSEL(const BYTE* record);
