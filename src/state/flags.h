// The service state that the daemon and the command line share: three one-byte flags in System V
// shared memory, and the number of agent processes.
#pragma once

#include <sys/ipc.h>

constexpr key_t stop_key = 5678;
constexpr key_t pause_key = 5679;
constexpr key_t cur_pause_key = 5680;

// One attachment of a flag's segment.
struct shm {
    int shm_id;
    char* shm_addr;
};

// The attachment of this process's latest write of each flag, or null.
extern shm* stop_shm;
extern shm* pause_shm;
extern shm* cur_pause_shm;

// Write a flag; each returns 0. Setting pause to 1 also sets current pause to 1.
int setStopFlag(int value);
int setPauseFlag(int value);
int setCurPauseFlag(int value);

// Read a flag; a missing or unattachable segment reads 1.
int getStopFlag();
int getPauseFlag();
int getCurPauseFlag();

// Writes the low byte of `value`, creating the 32-byte segment (mode 0666) when it is missing.
// Returns a new attachment, or null after perror("shmget") or perror("shmat").
shm* setSharedMemory(key_t which_key, int value);
// Returns the flag, or 1 after perror("shmget") or perror("shmat").
int getSharedMemory(key_t which_key);

// Detaches and removes the segment of each flag that this process has written, in the order
// pause, stop, current pause.
void removeHeldFlags();

// Agent processes of this user other than the caller; -1 when the process list can't be read.
int getServiceCount();

// 0 running, 1 paused, 2 stopped; another value only when the pause segment holds another byte.
int getVYNStatus();
