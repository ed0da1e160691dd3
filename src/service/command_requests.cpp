#include "service/command_requests.h"

#include "bmc/clear.h"
#include "bmc/command_fetch.h"
#include "bmc/parameter_upload.h"
#include "bmc/request.h"
#include "config/configuration.h"
#include "config/logs.h"
#include "nvme/locate.h"
#include "service/control.h"
#include "state/flags.h"
#include "state/schedule.h"

namespace {

constexpr long PERIOD = 5;

constexpr const char* DONE = "1;";
constexpr const char* NOT_DONE = "0;";

const char* locate(int index, int device) {
    const std::string name = "nvme" + std::to_string(device);
    return locateManage(index, name.c_str()) == 0 ? DONE : NOT_DONE;
}

// Returns the result text.
const char* perform(const command_request& request) {
    switch (request.option) {
    case OPTION_PAUSE_RESUME:
        if (request.value == 1)
            user_request_pause();
        else
            user_request_resume();
        return DONE;
    case OPTION_PERIOD:
        setUpdateFreq(request.value);
        return DONE;
    case OPTION_CLEAR:
        clearData();
        return DONE;
    case OPTION_NOTHING:
        return DONE;
    case OPTION_STATIC_PASS:
        static_flag = 1;
        return DONE;
    case OPTION_LOCATE_OFF:
        return locate(0, request.value);
    case OPTION_LOCATE_ON:
        return locate(1, request.value);
    default:
        printErrIntLog("Command Request option fail->", request.option);
        printErrLog("Command Request", "not support command request");
        return NOT_DONE;
    }
}

void waitForPeriod() {
    command_request_schedule.waitForNextCycle(PERIOD);
}

void carryOut(const std::string& index, const command_request& request) {
    ipmiCmdSet(PARM_COMMAND, index + "2;");
    if (bmcAway()) // the request stays, and is carried out once the BMC is back
        return;
    const char* result = perform(request);
    tryBmcAgain(); // whatever it met
    ipmiCmdSet(PARM_COMMAND_RESULT, index + request.key + ";" + result + ";");
    tryBmcAgain(); // or what was done would be asked for once more
    waitForPeriod();
}

// Fetches a request, answers it and releases the slot.
void serveRequest() {
    ipmiCmdSet(PARM_COMMAND_RESULT, "0");
    if (bmcAway())
        return;
    const fetched_command command = fetchCommand();
    if (command.text.empty())
        return;
    const std::string index = std::to_string(command.index);
    if (command.complete) {
        const std::optional<command_request> request = parseCommandRequest(command.text);
        if (request.has_value())
            carryOut(index, *request);
        else
            printErrLog("Command Request", "no key or flag");
    }
    ipmiCmdSet(PARM_COMMAND, index);
}

void wakePausedThreads() {
    monitor_schedule.wake();
    memory_schedule.wake();
    bmc_restart_monitor_schedule.wake();
}

void handOverResume() {
    if (getCurPauseFlag() != 1 || getPauseFlag() != 0)
        return;
    setCurPauseFlag(0);
    // Another process may have paused again meanwhile: its end must not be missed.
    if (getPauseFlag() == 1)
        setCurPauseFlag(1);
    wakePausedThreads();
}

// Makes every other thread look at the stop flag, whatever it waits for.
void handOverStop() {
    if (getPauseFlag() == 1)
        setPauseFlag(0);
    watchdog_reset_schedule.wake();
    wakePausedThreads();
}

} // namespace

std::optional<command_request> parseCommandRequest(std::string_view text) {
    const std::size_t key = text.find(';');
    const std::size_t key_end = key == text.npos ? text.npos : text.find(';', key + 1);
    if (key_end == text.npos || key_end + 1 == text.size() || key_end == key + 1 ||
        text.substr(0, key_end).find('\0') != text.npos)
        return std::nullopt;
    const std::string_view rest = text.substr(key_end + 1);
    command_request request;
    request.key = text.substr(key + 1, key_end - key - 1);
    request.option = static_cast<BYTE>(rest[0]);
    const bool takes_value =
        request.option == OPTION_PAUSE_RESUME || request.option == OPTION_PERIOD ||
        request.option == OPTION_LOCATE_OFF || request.option == OPTION_LOCATE_ON;
    if (takes_value && rest.size() > 1)
        request.value = static_cast<BYTE>(rest[1]);
    return request;
}

void* command_request_handler(void* /*arg*/) {
    while (getStopFlag() == 0) {
        const scoped_lock guard = command_request_schedule.cycle();
        tryBmcAgain();
        serveRequest();
        handOverResume();
        waitForPeriod();
    }
    handOverStop();
    return nullptr;
}
