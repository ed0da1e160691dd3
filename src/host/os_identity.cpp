#include "host/os_identity.h"

#include "bmc/report.h"
#include "config/logs.h"
#include "state/flags.h"
#include "text.h"
#include "tools/ask.h"
#include "tools/one_line.h"

#include <cstdio>

namespace {

constexpr value_report OS_NAME = {"OS name", "OS name ->", PARM_OS_NAME};
constexpr value_report OS_VERSION = {"OS version", "OS version ->", PARM_OS_VERSION};

int reportOsValue(const value_report& how, const command_line& words) {
    std::string text = lineOf(ask({words, how.logged}));
    if (stopRequested())
        return 0;
    if (text.empty()) {
        text = "n/a";
        static_flag = 1;
        printErrLog(how.logged, "command not found");
    }
    if (dropNewline(text))
        text += ';';
    replaceEmptyToNA(text);
    reportValue(how, text);
    return 0;
}

} // namespace

int getOSName() {
    return reportOsValue(OS_NAME, {"uname"});
}

int getOSVersion() {
    return reportOsValue(OS_VERSION, {"uname", "-r", "-p"});
}
