// The service state that the daemon and the command line share: three one-byte flags in System V
// shared memory.
#pragma once

#include <memory>
#include <sys/ipc.h>

constexpr key_t stop_key = 5678;
constexpr key_t pause_key = 5679;
constexpr key_t cur_pause_key = 5680;

// One attachment of a flag's segment; detached with the object.
struct shm {
    int shm_id;
    char* shm_addr;

    shm(int id, void* address) : shm_id(id), shm_addr(static_cast<char*>(address)) {}
    ~shm();
    shm(const shm&) = delete;
    shm& operator=(const shm&) = delete;
};

// The attachment of this process's latest write of each flag, or null.
extern std::unique_ptr<shm> stop_shm, pause_shm, cur_pause_shm;

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
std::unique_ptr<shm> setSharedMemory(key_t which_key, int value);
// Returns the flag, or 1 after perror("shmget") or perror("shmat").
int getSharedMemory(key_t which_key);

// Whether this process is the service, or one that stops it: it has written the stop flag. A
// one-shot run has not.
bool belongsToService();

// Whether this process belongs to the service and has been asked to end: the stop flag is set, or
// its farewell (system_info.h) has begun.
bool stopRequested();

// Detaches and removes the segment of each flag that this process has written, in the order
// pause, stop, current pause. A stop segment that a new service has reset is left to it.
void removeHeldFlags();
