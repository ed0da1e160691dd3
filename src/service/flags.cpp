#include "service/flags.h"

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
void storeFlag(char* address, int value) {
    __atomic_store_n(address, static_cast<char>(value), __ATOMIC_RELAXED);
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

} // namespace

shm* setSharedMemory(key_t which_key, int value, shm* held) {
    const int segment = shmget(which_key, SEGMENT_SIZE, IPC_CREAT | SEGMENT_MODE);
    if (segment == -1)
        std::perror("shmget");
    if (held != nullptr && held->shm_id == segment) {
        storeFlag(held->shm_addr, value);
        return held;
    }
    if (held != nullptr) {
        shmdt(held->shm_addr);
        delete held;
    }
    void* address = segment == -1 ? nullptr : attach(segment);
    if (address == nullptr)
        return nullptr;
    storeFlag(static_cast<char*>(address), value);
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
    stop_shm = setSharedMemory(stop_key, value, stop_shm);
    return 0;
}

int setPauseFlag(int value) {
    pause_shm = setSharedMemory(pause_key, value, pause_shm);
    if (value == 1)
        setCurPauseFlag(1);
    return 0;
}

int setCurPauseFlag(int value) {
    cur_pause_shm = setSharedMemory(cur_pause_key, value, cur_pause_shm);
    return 0;
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
