#include "host/os_identity.h"

#include "bmc/parameter_upload.h"
#include "config/logs.h"
#include "shell.h"
#include "text.h"

#include <cstdio>

namespace {

struct os_value {
    const char* command;
    const char* label;
    const char* print_format;
    BYTE parm;
};

constexpr os_value OS_NAME = {"uname", "OS name ->", "OS name : %s\n", PARM_OS_NAME};
constexpr os_value OS_VERSION = {"uname -r -p", "OS version ->", "OS version : %s\n",
                                 PARM_OS_VERSION};

int reportOsValue(const os_value& value) {
    std::string text;
    if (!captureLine(value.command, value.label, text)) {
        text = "n/a";
        printErrLog(value.label, "command not found");
    }
    if (dropNewline(text))
        text += ';';
    replaceEmptyToNA(text);
    std::printf(value.print_format, text.c_str());
    printLog(value.label, text);
    ipmiCmdSet(value.parm, text);
    return 0;
}

} // namespace

int getOSName() {
    return reportOsValue(OS_NAME);
}

int getOSVersion() {
    return reportOsValue(OS_VERSION);
}
