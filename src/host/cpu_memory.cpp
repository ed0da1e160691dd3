#include "host/cpu_memory.h"

#include "bmc/parameter_upload.h"
#include "config/logs.h"
#include "memory_script.h"
#include "platform/platform.h"
#include "shell.h"
#include "text.h"

#include <array>
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
constexpr const char* MEMORY_LABEL = "Memory Usage ->";

// Held over the sample list by the memory and the monitor thread, never while a command runs or
// an upload waits.
std::mutex memory_guard;

// Differences go through unsigned arithmetic: a counter may hold anything.
std::int64_t difference(std::int64_t latest, std::int64_t before) {
    const auto wide = static_cast<std::uint64_t>(latest) - static_cast<std::uint64_t>(before);
    if (latest >= before)
        return static_cast<std::int64_t>(wide);
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(wide));
}

// Runs the memory script and appends what it prints to the sample list. Returns its whole output.
std::string sampleMemory() {
    list *head = nullptr, *prev = nullptr;
    std::string lines, line;
    for (shell_capture shell(memory_script, MEMORY_LABEL); shell.readPiece(line);) {
        lines += line;
        list* node = new (std::nothrow) list{};
        if (node == nullptr) {
            std::printf("Memory Usage malloc error : %s\n", lines.c_str());
            printErrLog("Memory Usage malloc error ->", lines);
            break;
        }
        copyText(node->parm, line);
        appendNodes(head, prev, node, node);
    }
    const std::lock_guard<std::mutex> held(memory_guard);
    appendNodes(memory_head, memory_prev, head, prev);
    return lines;
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
    std::printf("CPU Usage %% : %s\n", text.c_str());
    printLog("CPU Usage % ->", text);
    ipmiCmdSet(PARM_CPU, text);
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

int getMemoryUsage(int sendCmd) {
    const std::string lines = sampleMemory();
    if (lines.empty())
        printErrLog(MEMORY_LABEL, "command not found");
    if (sendCmd != 1)
        return 0;

    int mean = 0;
    const bool known = takeMemoryMean(mean) && !lines.empty();
    if (!known) {
        ipmiCmdSet(PARM_MEMORY, "");
        return 0;
    }
    const std::string text = std::to_string(mean).substr(0, MEMORY_TEXT_LENGTH) + ";";
    std::printf("Memory Usage %% : %s\n", text.c_str());
    printLog("Memory Usage % ->", text);
    ipmiCmdSet(PARM_MEMORY, text);
    return 0;
}
