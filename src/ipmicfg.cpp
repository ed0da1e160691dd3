// The command line: "-agent" and one sub-command.

#include "bmc/clear.h"
#include "bmc/file_download.h"
#include "bmc/request.h"
#include "host/cpu_memory.h"
#include "host/network_inventory.h"
#include "host/network_usage.h"
#include "host/os_identity.h"
#include "nvme/smart.h"
#include "service/agent_processes.h"
#include "service/control.h"
#include "service/startup.h"
#include "storage/inventory.h"
#include "storage/smart_collectors.h"
#include "storage/storage_kind.h"
#include "system_info.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr int EXIT_USAGE = 31;

constexpr const char* USAGE = "\n"
                              "For Engineer testing only\n"
                              "  -agent start-service         start Corvane service.\n"
                              "  -agent stop-service          stop  Corvane service.\n"
                              "  -agent pause-service         pause  Corvane service.\n"
                              "  -agent resume-service        resume  Corvane service.\n"
                              "  -agent osname                get OS name.\n"
                              "  -agent osversion             get OS version.\n"
                              "  -agent lan                   get network information.\n"
                              "  -agent cpu-util              CPU utilization.\n"
                              "  -agent memory-util           memory utilization.\n"
                              "  -agent smart                 smart storage utilization.\n"
                              "  -agent smart-lsi             lsi smart.\n"
                              "  -agent smart-intel           intel rste smart.\n"
                              "  -agent smart-nvme            nvme smart storage utilization.\n"
                              "  -agent network-util          network utilization.\n"
                              "  -agent clear                 clear all data\n"
                              "  -agent version               version\n"
                              "  -agent status                service status\n"
                              "  -agent nvme-status           firmware nvme supported status\n";

[[noreturn]] void ExitWithUsage() {
    std::fputs(USAGE, stdout);
    endProcess(EXIT_USAGE);
}

int printVersion() {
    std::printf("version %s build %s protocol %s\n", VYN_VERSION, VYN_BUILD, VYN_PROTOCOL);
    return 0;
}

int printStatus() {
    constexpr const char* MESSAGES[] = {"VYN is running", "VYN is pause", "VYN is stop"};
    const int status = getVYNStatus();
    std::puts(status >= 0 && status <= 2 ? MESSAGES[status] : "VYN unknown");
    return 0;
}

struct sub_command {
    const char* name;
    int (*action)(); // its result is the exit status
};

constexpr sub_command SUB_COMMANDS[] = {
    {"osname", getOSName},
    {"osversion", getOSVersion},
    {"lan", getLan},
    {"cpu-util", getCPUUsage},
    {"memory-util", [] { return getMemoryUsage(1); }},
    {"smart-lsi", getSmartLSI},
    {"hdd-type", getHddType},
    {"smart-intel", getSmartIntelRSTe},
    {"smart", getSmartStorageUsage},
    {"smart-nvme", getNVMeSMARTInfo},
    {"network-util", [] { return getNetworkUsage(1); }},
    {"start-service", start},
    {"stop-service", stop},
    {"pause-service", pause_service},
    {"resume-service", resume_service},
    {"clear", clearData},
    {"version", printVersion},
    {"status", printStatus},
    {"nvme-status",
     [] {
         isSupportedNVMe();
         return 0;
     }},
};

} // namespace

int main(int argc, char** argv) {
    if (argc < 3 || std::strcmp(argv[1], "-agent") != 0)
        ExitWithUsage();
    for (const sub_command& each : SUB_COMMANDS)
        if (std::strcmp(argv[2], each.name) == 0) {
            const int status = each.action();
            tellUnreached();
            endProcess(status);
        }
    ExitWithUsage();
}
