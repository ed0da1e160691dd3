#include "host/network_usage.h"

#include "bmc/report.h"
#include "config/logs.h"
#include "host/interface_facts.h"
#include "host/interface_walk.h"
#include "host/network_events.h"
#include "host/samples.h"
#include "text.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>

network_usage_list* network_head = nullptr;
network_usage_list* network_prev = nullptr;

namespace {

using std::chrono::steady_clock;

constexpr std::size_t MAX_INTERFACES = 32;
constexpr double BITS_PER_MBIT = 1048576;

constexpr list_report USAGE_REPORT = {"Network Usage items %d%d\n",
                                      "Network Usage -> ",
                                      "Network Usage items ->",
                                      "Network Usage % ->",
                                      PARM_NETWORK_COUNT,
                                      PARM_NETWORK,
                                      false,
                                      nullptr};

// Held over the sample list by the memory and the monitor thread, never while a program runs or
// an upload waits.
std::mutex network_guard;
unsigned long seconds = 0; // see network_usage_list

// Appends a sample per interface. The guard is held from before the walk, so that the samples of
// two threads stand in time order. The last sample of a report stays out when the others were
// paused before it: the traffic meanwhile would count as that of a second.
std::optional<std::vector<interface_row>> sampleInterfaces(bool is_last) {
    constexpr std::chrono::seconds PAUSE{2};
    static steady_clock::time_point newest;
    auto rows = walkInterfaces(MAX_INTERFACES);
    const auto now = steady_clock::now();
    if (!rows.has_value() || (is_last && network_head != nullptr && now - newest > PAUSE))
        return rows;
    newest = now;
    ++seconds;
    for (const interface_row& row : *rows) {
        network_usage_list* sample = appendNode(network_head, network_prev);
        sample->no = row.data.ifi_ibytes + row.data.ifi_obytes;
        sample->second = seconds;
        copyText(sample->parm, row.name);
    }
    dropOldest(network_head, network_prev, [](const network_usage_list& sample) {
        return seconds - sample.second >= SAMPLE_SECONDS_MOST;
    });
    return rows;
}

// Empties the sample list into a list of the caller's.
void takeSamples(network_usage_list*& head, network_usage_list*& prev) {
    head = network_head;
    prev = network_prev;
    network_head = network_prev = nullptr;
}

// Mean utilisation in percent. Each difference is one second of traffic; one of a counter that
// went backwards counts as if it had wrapped at 64 bits.
float meanUtilisation(const network_usage_list* samples, const std::string& name, int speed) {
    const double capacity = speed * BITS_PER_MBIT;
    float sum = 0;
    int count = 0;
    std::uint64_t previous = 0;
    for (const network_usage_list* sample = samples; sample != nullptr; sample = sample->next) {
        if (sample->parm != name)
            continue;
        if (count++ > 0)
            sum =
                static_cast<float>(static_cast<double>(sum) +
                                   static_cast<double>(sample->no - previous) * 8 / capacity * 100);
        previous = sample->no;
    }
    return count == 0 ? 0 : sum / static_cast<float>(count);
}

std::string utilisationText(const network_usage_list* samples, const std::string& name) {
    const int speed = factsOf(name).speed;
    if (speed < 1)
        return "unknown media type";
    const float mean = meanUtilisation(samples, name, speed);
    if (mean < 1.0F)
        return "<1";
    char text[64]; // a float's largest value has 42 characters
    std::snprintf(text, sizeof text, "%.2f", static_cast<double>(mean));
    return text;
}

std::string usageRecord(const network_usage_list* samples, const interface_row& row) {
    const std::string name = bare(row.name);
    if (!row.up)
        return name + ":0:" + NETWORK_DOWN + ";0;0;0;0;";
    std::string record = name + ":" + utilisationText(samples, row.name) + ":" + NETWORK_UP + ";";
    for (const std::uint64_t counter :
         {row.data.ifi_ibytes, row.data.ifi_ierrors, row.data.ifi_obytes, row.data.ifi_oerrors})
        record += std::to_string(counter) + ";";
    return record;
}

void report(const network_usage_list* samples, const std::vector<interface_row>& rows) {
    const int count = static_cast<int>(rows.size());
    std::printf(USAGE_REPORT.count_printed, count / COUNT_BASE, count % COUNT_BASE);
    if (count == 0)
        return;
    printIntLog(USAGE_REPORT.count_logged, count);
    askInterfaces(rows);
    list *head = nullptr, *prev = nullptr;
    for (const interface_row& row : rows)
        copyText(appendNode(head, prev)->parm, usageRecord(samples, row));
    // Each record is printed when its turn comes: a refusal of the one before stands between.
    uploadList(USAGE_REPORT, head, count, [](const list& item, std::size_t) {
        std::printf("%s%s\n", USAGE_REPORT.item_printed, item.parm);
    });
    freeNodes(head, prev);
}

} // namespace

void dropNetworkSamples() {
    const std::lock_guard<std::mutex> held(network_guard);
    freeNodes(network_head, network_prev);
}

int getNetworkUsage(int sendCmd) {
    std::optional<std::vector<interface_row>> rows;
    network_usage_list *samples = nullptr, *last = nullptr;
    {
        const std::lock_guard<std::mutex> held(network_guard);
        rows = sampleInterfaces(sendCmd == 1);
        if (sendCmd == 1)
            takeSamples(samples, last);
    }
    if (!rows.has_value())
        printErrLog("Network Usage ->", "command not found");
    if (sendCmd == 1)
        report(samples, rows.value_or(std::vector<interface_row>()));
    freeNodes(samples, last);
    return 0;
}
