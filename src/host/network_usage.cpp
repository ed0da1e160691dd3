#include "host/network_usage.h"

#include "bmc/parameter_upload.h"
#include "config/logs.h"
#include "host/interface_walk.h"
#include "host/media_speed.h"
#include "host/network_events.h"
#include "platform/platform.h"
#include "text.h"

#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>

network_usage_list* network_head = nullptr;
network_usage_list* network_prev = nullptr;

namespace {

constexpr int MAX_INTERFACES = 32;
constexpr double BITS_PER_MBIT = 1048576;

// Held over the sample list by the memory and the monitor thread, never while a command runs or
// an upload waits.
std::mutex network_guard;

// Appends a sample per interface and returns their number.
int sampleInterfaces() {
    int rows = 0, count = 0;
    if (platform::interface_count(rows) != 0) {
        printErrLog("Network Usage ->", "command not found");
        return 0;
    }
    network_usage_list *head = nullptr, *prev = nullptr;
    walkInterfaces(rows, [&](int, const platform::ifmibdata& data) {
        network_usage_list* sample = appendNode(head, prev);
        sample->no = data.ifi_ibytes + data.ifi_obytes;
        copyText(sample->parm, interfaceName(data));
        return ++count < MAX_INTERFACES;
    });
    const std::lock_guard<std::mutex> held(network_guard);
    appendNodes(network_head, network_prev, head, prev);
    return count;
}

// Empties the sample list into a list of the caller's.
void takeSamples(network_usage_list*& head, network_usage_list*& prev) {
    const std::lock_guard<std::mutex> held(network_guard);
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
    const int speed = linkSpeed(name);
    if (speed < 1)
        return "unknown media type";
    const float mean = meanUtilisation(samples, name, speed);
    if (mean < 1.0F)
        return "<1";
    char text[64]; // a float's largest value has 42 characters
    std::snprintf(text, sizeof text, "%.2f", static_cast<double>(mean));
    return text;
}

std::string usageRecord(const network_usage_list* samples, const platform::ifmibdata& data) {
    const std::string name = interfaceName(data);
    if ((data.ifmd_flags & platform::INTERFACE_UP) == 0)
        return name + ":0:" + NETWORK_DOWN + ";0;0;0;0;";
    std::string record = name + ":" + utilisationText(samples, name) + ":" + NETWORK_UP + ";";
    for (const std::uint64_t counter :
         {data.ifi_ibytes, data.ifi_ierrors, data.ifi_obytes, data.ifi_oerrors})
        record += std::to_string(counter) + ";";
    return record;
}

void uploadRecords(const network_usage_list* samples, int count) {
    printIntLog("Network Usage items ->", count);
    ipmiCmdSet(PARM_NETWORK_COUNT, itemCount(count));
    int rows = 0, sent = 0;
    if (platform::interface_count(rows) != 0)
        return;
    walkInterfaces(rows, [&](int, const platform::ifmibdata& data) {
        const std::string record = usageRecord(samples, data);
        printLog("Network Usage % ->", record);
        std::printf("Network Usage -> %s\n", record.c_str());
        ipmiCmdSet(PARM_NETWORK, record);
        return ++sent < count;
    });
}

} // namespace

void dropNetworkSamples() {
    network_usage_list *samples = nullptr, *last = nullptr;
    takeSamples(samples, last);
    freeNodes(samples, last);
}

int getNetworkUsage(int sendCmd) {
    const int count = sampleInterfaces();
    if (sendCmd != 1)
        return 0;
    network_usage_list *samples = nullptr, *last = nullptr;
    takeSamples(samples, last);
    std::printf("Network Usage items %d%d\n", count / 255, count % 255);
    if (count > 0)
        uploadRecords(samples, count);
    freeNodes(samples, last);
    return 0;
}
