// The raw KCS exchange: registers, waits and frames (IPMI v2.0, 9.2 to 9.9). The caller holds
// ipmi_lock and the process has I/O-port privilege.
#pragma once

#include "include_linux/ipmi.h"

#include <chrono>

extern unsigned int KCS_DATA;   // data port
extern unsigned int KCS_STATUS; // status and command port
extern int resp_data_len;       // bytes in the latest response frame

// Status register: bits 7..6 are the state.
constexpr unsigned char KCS_OBF = 0x01; // a byte from the BMC waits in the data register
constexpr unsigned char KCS_IBF = 0x02; // the BMC has not taken the last byte written
constexpr unsigned char KCS_STATE_MASK = 0xC0;
constexpr unsigned char KCS_STATE_IDLE = 0x00;
constexpr unsigned char KCS_STATE_READ = 0x40;
constexpr unsigned char KCS_STATE_WRITE = 0x80;

// Control codes, written to the command register; KCS_READ goes to the data register.
constexpr unsigned char KCS_GET_STATUS_ABORT = 0x60;
constexpr unsigned char KCS_WRITE_START = 0x61;
constexpr unsigned char KCS_WRITE_END = 0x62;
constexpr unsigned char KCS_READ = 0x68;

// A BMC that goes on sending after this many bytes is taken to be out of step; the driver
// transport takes as many.
constexpr int KCS_RESPONSE_LIMIT = IPMI_BUF_SIZE;

void kcs_ReadStatus(unsigned char* status);
void kcs_GetState(unsigned char* state); // the status byte and KCS_STATE_MASK
void kcs_ReadData(unsigned char* data);
void kcs_WriteData(unsigned char data);
void kcs_WriteCommand(unsigned char cmd);

// Wait for IBF to go clear, or for OBF to go set: 0, or 1 after one second or at the end of the
// exchange's time.
using kcs_time = std::chrono::steady_clock::time_point;
int kcs_WaitOnIBF(kcs_time exchange_end);
int kcs_WaitOnOBF(kcs_time exchange_end);

void kcs_ClearOBF(); // reads and drops the data byte when OBF is set
int kcs_OBFSet();    // 1 when OBF is set, else 0

// Exchanges the frame of `kcs_ReqLength` bytes, from byte `kcs_CurLength` on, for its response:
// ResponseBuf (FRAME_SIZE bytes) and resp_data_len. Exchanges of several processes are serialised
// by a lock on /var/run/vyn.kcs.lock, which is waited for at most ten seconds; an exchange lasts
// ten at most; three seconds each under a stop. Returns 0, or 1 after printing the exit line.
int kcs_exchange(unsigned char* RequestCmd, unsigned char* ResponseBuf, int kcs_ReqLength,
                 int kcs_CurLength);
