#include "host/cpu_memory.h"

#include "bmc/report.h"
#include "config/logs.h"
#include "host/samples.h"
#include "text.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <mutex>
#include <string>

list* memory_head = nullptr;
list* memory_prev = nullptr;
list* memory_current = nullptr;

namespace {

using ticks = std::array<std::int64_t, CPU_STATES>;

// Monitor thread or one-shot process only.
ticks cp_time, cp_old, cp_diff;

constexpr std::size_t CPU_TEXT_LENGTH = 7;
constexpr std::size_t MEMORY_TEXT_LENGTH = 9;

constexpr value_report CPU_REPORT = {"CPU Usage %", "CPU Usage % ->", PARM_CPU};
constexpr value_report MEMORY_REPORT = {"Memory Usage %", "Memory Usage % ->", PARM_MEMORY};

// Held over the sample list by the memory and the monitor thread, never while an upload waits.
std::mutex memory_guard;
int samples_taken = 0;

// Differences go through unsigned arithmetic: a counter may hold anything.
std::int64_t difference(std::int64_t latest, std::int64_t before) {
    const auto wide = static_cast<std::uint64_t>(latest) - static_cast<std::uint64_t>(before);
    if (latest >= before)
        return static_cast<std::int64_t>(wide);
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(wide));
}

// Rounded as top shows it, in bytes again.
std::int64_t asShown(std::uint64_t bytes) {
    constexpr std::uint64_t MOST = std::uint64_t{1} << 55; // keeps all sums below 64 bits
    constexpr std::int64_t SHOWN_BELOW = 100000;
    auto amount = static_cast<std::int64_t>(std::min(bytes, MOST) / 1024);
    std::int64_t unit = 1024;
    for (int larger = 0; larger < 2 && amount >= SHOWN_BELOW; ++larger) {
        amount = (amount + 512) / 1024;
        unit *= 1024;
    }
    return amount * unit;
}

// Appends a sample. False when the kernel doesn't tell.
bool sampleMemory() {
    platform::memory_amounts amounts;
    if (platform::memory(amounts) != 0 || amounts.physical == 0)
        return false;
    const std::string line = std::to_string(memoryInUse(amounts)) + "\n";
    list* node = new (std::nothrow) list{};
    if (node == nullptr) {
        std::printf("Memory Usage malloc error : %s\n", line.c_str());
        printErrLog("Memory Usage malloc error ->", line);
        return true;
    }
    copyText(node->parm, line);
    const std::lock_guard<std::mutex> held(memory_guard);
    node->no = ++samples_taken;
    appendNodes(memory_head, memory_prev, node, node);
    dropOldest(memory_head, memory_prev, [](const list& sample) {
        return static_cast<unsigned long>(samples_taken - sample.no) >= SAMPLE_SECONDS_MOST;
    });
    return true;
}

// The mean of all samples, whose list is empty then. False when there was none.
bool takeMemoryMean(int& mean) {
    long long sum = 0, count = 0;
    const std::lock_guard<std::mutex> held(memory_guard);
    for (memory_current = memory_head; memory_current != nullptr;
         memory_current = memory_current->next) {
        sum += leadingInteger(memory_current->parm, 0);
        ++count;
    }
    freeNodes(memory_head, memory_prev);
    mean = count == 0 ? 0 : static_cast<int>(sum / count);
    return count != 0;
}

} // namespace

int getCPUUsage() {
    char number[64];
    std::snprintf(number, sizeof number, "%.2f", static_cast<double>(cpu_state()));
    const std::string text = std::string(number).substr(0, CPU_TEXT_LENGTH) + ";";
    reportValue(CPU_REPORT, text);
    return 0;
}

float cpu_state() {
    cp_old = cp_time;
    if (platform::cp_time(cp_time) != 0)
        return 0.0F;
    const long total = percentages(CPU_STATES, cp_time.data(), cp_old.data(), cp_diff.data());
    const auto all = static_cast<double>(total);
    return static_cast<float>((all - static_cast<double>(cp_diff[CPU_STATES - 1])) / all * 100);
}

long percentages(int cnt, std::int64_t* new_counts, std::int64_t* old_counts, std::int64_t* diffs) {
    std::uint64_t total = 0;
    for (int state = 0; state < cnt; ++state) {
        diffs[state] = difference(new_counts[state], old_counts[state]);
        old_counts[state] = new_counts[state];
        total += static_cast<std::uint64_t>(diffs[state]);
    }
    return total == 0 ? 1 : static_cast<long>(total);
}

int memoryInUse(const platform::memory_amounts& amounts) {
    const auto total = static_cast<std::int64_t>(
        std::min<std::uint64_t>(amounts.physical, std::numeric_limits<std::int64_t>::max() / 100));
    const std::int64_t in_use = total - asShown(amounts.free) - asShown(amounts.inactive);
    return static_cast<int>(std::clamp<std::int64_t>(in_use * 100 / total, INT_MIN, INT_MAX));
}

int getMemoryUsage(int sendCmd) {
    const bool sampled = sampleMemory();
    if (!sampled)
        printErrLog("Memory Usage ->", "command not found");
    if (sendCmd != 1)
        return 0;

    int mean = 0;
    if (takeMemoryMean(mean) && sampled)
        reportValue(MEMORY_REPORT, std::to_string(mean).substr(0, MEMORY_TEXT_LENGTH) + ";");
    else
        ipmiCmdSet(PARM_MEMORY, "");
    return 0;
}
