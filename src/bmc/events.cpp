#include "bmc/events.h"

#include "bmc/request.h"
#include "config/logs.h"

#include <cstdio>

namespace {

constexpr BYTE record_not_supported = 0x80;
constexpr BYTE erase_in_progress = 0x81;

// What distinguishes the two senders: the title of their log lines.
struct sender {
    const char* title;      // followed by a value
    const char* done;       // on standard output
    const char* fail_title; // followed by a completion code
};

constexpr sender lan_sender = {"send Lan SEL ", "send Lan SEL done", "send Lan SEL fail, cCode ->"};
constexpr sender smart_sender = {"send Smart SEL ", "send Smart SEL done",
                                 "send Smart SEL fail, cCode ->"};

int sendRecord(const sender& from, const selRecord& record) {
    if (bmcAway())
        return 1;
    const BYTE code = askBmc(NETFN_SENSOR_EVENT, CMD_PLATFORM_EVENT,
                             reinterpret_cast<const BYTE*>(&record), sizeof record)
                          .code;
    switch (code) {
    case 0:
        std::printf("%s\n", from.done);
        printCommandLog(from.title, "done");
        return 0;
    case record_not_supported:
        printErrLog(from.title, "operation not support for this record type");
        return 1;
    case erase_in_progress:
        printErrLog(from.title, "cannot execute command, SEL erase in progress");
        return 1;
    default:
        printErrIntLog(from.fail_title, code);
        return 1;
    }
}

} // namespace

int sendLanSEL(const selRecord& record) {
    return sendRecord(lan_sender, record);
}

int sendSmartSEL(const selRecord& record) {
    std::printf("sensor num %x alert type %x  event type %x event2 %x event3 %x\n",
                record.sensor_num, record.alert_type, record.event_type, record.event2,
                record.event3);
    return sendRecord(smart_sender, record);
}
