#include "state/flags.h"

#include "system_info.h"

#include <cstdio>
#include <initializer_list>
#include <sys/shm.h>

std::unique_ptr<shm> stop_shm, pause_shm, cur_pause_shm;

namespace {

constexpr std::size_t SEGMENT_SIZE = 32;
constexpr int SEGMENT_MODE = 0666;

// The flag is one byte that other processes read and write at any time.
void storeFlag(char* address, int value) {
    __atomic_store_n(address, static_cast<char>(value), __ATOMIC_RELAXED);
}

signed char loadFlag(const char* address) {
    return static_cast<signed char>(__atomic_load_n(address, __ATOMIC_RELAXED));
}

std::unique_ptr<shm> attach(key_t which_key, int flags) {
    const int segment = shmget(which_key, SEGMENT_SIZE, flags | SEGMENT_MODE);
    if (segment == -1) {
        std::perror("shmget");
        return nullptr;
    }
    void* address = shmat(segment, nullptr, 0);
    if (address == reinterpret_cast<void*>(-1)) {
        std::perror("shmat");
        return nullptr;
    }
    return std::make_unique<shm>(segment, address);
}

} // namespace

shm::~shm() {
    shmdt(shm_addr);
}

std::unique_ptr<shm> setSharedMemory(key_t which_key, int value) {
    std::unique_ptr<shm> handle = attach(which_key, IPC_CREAT);
    if (handle != nullptr)
        storeFlag(handle->shm_addr, value);
    return handle;
}

int getSharedMemory(key_t which_key) {
    const std::unique_ptr<shm> handle = attach(which_key, 0);
    return handle == nullptr ? 1 : loadFlag(handle->shm_addr);
}

int setStopFlag(int value) {
    stop_shm = setSharedMemory(stop_key, value);
    return 0;
}

int setPauseFlag(int value) {
    pause_shm = setSharedMemory(pause_key, value);
    return value == 1 ? setCurPauseFlag(1) : 0;
}

int setCurPauseFlag(int value) {
    cur_pause_shm = setSharedMemory(cur_pause_key, value);
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

bool belongsToService() {
    return stop_shm != nullptr;
}

bool stopRequested() {
    return farewellBegun() || (belongsToService() && getStopFlag() != 0);
}

void removeHeldFlags() {
    for (std::unique_ptr<shm>* held : {&pause_shm, &stop_shm, &cur_pause_shm}) {
        if (*held == nullptr)
            continue;
        const int segment = (*held)->shm_id;
        const bool is_taken = held == &stop_shm && loadFlag((*held)->shm_addr) == 0;
        held->reset();
        if (is_taken) // by a service that has started meanwhile
            continue;
        shmctl(segment, IPC_RMID, nullptr);
    }
}
