#include "state/flags.h"

#include "shell.h"

#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <sys/shm.h>

shm* stop_shm = nullptr;
shm* pause_shm = nullptr;
shm* cur_pause_shm = nullptr;

namespace {

constexpr std::size_t SEGMENT_SIZE = 32;
constexpr int SEGMENT_MODE = 0666;

// The flag is one byte that other processes read and write at any time.
void storeFlag(void* address, int value) {
    __atomic_store_n(static_cast<char*>(address), static_cast<char>(value), __ATOMIC_RELAXED);
}

signed char loadFlag(const void* address) {
    return __atomic_load_n(static_cast<const signed char*>(address), __ATOMIC_RELAXED);
}

void* attach(int segment) {
    void* address = shmat(segment, nullptr, 0);
    if (address != reinterpret_cast<void*>(-1))
        return address;
    std::perror("shmat");
    return nullptr;
}

// Writes a flag and lets the new attachment take the place of the one held.
int setFlag(shm*& held, key_t which_key, int value) {
    const shm* before = held;
    held = setSharedMemory(which_key, value);
    if (before != nullptr)
        shmdt(before->shm_addr);
    delete before;
    return 0;
}

} // namespace

shm* setSharedMemory(key_t which_key, int value) {
    const int segment = shmget(which_key, SEGMENT_SIZE, IPC_CREAT | SEGMENT_MODE);
    if (segment == -1) {
        std::perror("shmget");
        return nullptr;
    }
    void* address = attach(segment);
    if (address == nullptr)
        return nullptr;
    storeFlag(address, value);
    return new shm{segment, static_cast<char*>(address)};
}

int getSharedMemory(key_t which_key) {
    const int segment = shmget(which_key, SEGMENT_SIZE, SEGMENT_MODE);
    if (segment == -1) {
        std::perror("shmget");
        return 1;
    }
    void* address = attach(segment);
    if (address == nullptr)
        return 1;
    const int value = loadFlag(address);
    shmdt(address);
    return value;
}

int setStopFlag(int value) {
    return setFlag(stop_shm, stop_key, value);
}

int setPauseFlag(int value) {
    setFlag(pause_shm, pause_key, value);
    return value == 1 ? setCurPauseFlag(1) : 0;
}

int setCurPauseFlag(int value) {
    return setFlag(cur_pause_shm, cur_pause_key, value);
}

int getStopFlag() {
    return getSharedMemory(stop_key);
}

int getPauseFlag() {
    return getSharedMemory(pause_key);
}

int getCurPauseFlag() {
    return getSharedMemory(cur_pause_key);
}

void removeHeldFlags() {
    for (shm* handle : {pause_shm, stop_shm, cur_pause_shm}) {
        if (handle == nullptr)
            continue;
        shmdt(handle->shm_addr);
        shmctl(handle->shm_id, IPC_RMID, nullptr);
    }
}

int getServiceCount() {
    std::string digit;
    shell_capture shell("ps -x | grep IPMIVYN | grep -v grep | wc -l | sed 's/ *//g'",
                        "getServiceCount");
    shell.readPiece(digit, 1);
    return std::atoi(digit.c_str()) - 1;
}

int getVYNStatus() {
    return getServiceCount() < 1 ? 2 : getPauseFlag();
}
