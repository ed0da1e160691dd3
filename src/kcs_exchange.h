// The registers of a KCS interface and the waits on them (IPMI v2.0, 9.2 to 9.9). kcs_exchange,
// which uses them, is declared in kcs_linux.h. The caller holds ipmi_lock and the process has
// I/O-port privilege. SIGALRM and ITIMER_REAL belong to these waits alone.
#pragma once

#include "include_linux/ipmi.h"

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

// Wait for IBF to go clear, or for OBF to go set: 0, or 1 after one second. SIGALRM must not be
// blocked in every thread.
int kcs_WaitOnIBF();
int kcs_WaitOnOBF();

void kcs_ClearOBF(); // reads and drops the data byte when OBF is set
int kcs_OBFSet();    // 1 when OBF is set, else 0
