// NetFn and command numbers of every request that the agent sends.
#pragma once

#include "system_info.h"

// IPMI v2.0, 5.1 and appendix G
constexpr BYTE NETFN_SENSOR_EVENT = 0x04;
constexpr BYTE NETFN_APP = 0x06;
constexpr BYTE NETFN_STORAGE = 0x0A;
constexpr BYTE NETFN_PICMG = 0x2C;
constexpr BYTE NETFN_OEM = 0x30;

constexpr BYTE CMD_PLATFORM_EVENT = 0x02; // NETFN_SENSOR_EVENT
constexpr BYTE CMD_GET_DEVICE_ID = 0x01;  // NETFN_APP
constexpr BYTE CMD_SET_SYSTEM_INFO_PARAMS = 0x58;
constexpr BYTE CMD_GET_SYSTEM_INFO_PARAMS = 0x59;
constexpr BYTE CMD_GET_SEL_TIME = 0x48;      // NETFN_STORAGE
constexpr BYTE CMD_OEM_FILE_DOWNLOAD = 0xA0; // NETFN_OEM
constexpr BYTE CMD_OEM_WATCHDOG = 0xB6;
constexpr BYTE CMD_OEM_WATCHDOG_OLD = 0xB3;
constexpr BYTE CMD_OEM_GENERAL = 0x70; // told apart by its first data byte:
constexpr BYTE OEM_RESTART_CLEAN = 0xA9;
constexpr BYTE OEM_NVME_POSITION = 0x6C;

constexpr BYTE BMC_ADDRESS = 0x20;
constexpr int RESPONSE_SIZE = 200; // the response buffer of every caller of runIpmiCmd
