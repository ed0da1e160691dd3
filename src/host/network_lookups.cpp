#include "host/network_lookups.h"

#include "config/logs.h"
#include "host/shell_operand.h"
#include "shell.h"
#include "text.h"

namespace {

constexpr const char* LABEL = "Lan ->";
constexpr const char* FQDN_LABEL = "FQDN ->";
constexpr const char* DESCRIPTION_LABEL = "get description ->";

std::string statusPipeline(const std::string& iface) {
    return "ifconfig " + shellOperand(iface) + " | grep status | awk '{print $2}'";
}

} // namespace

std::string getIPv6(const std::string& iface) {
    return captureJoined("ifconfig " + shellOperand(iface) + " | grep inet6 | awk '{print $2}'",
                         LABEL, ",");
}

std::string getGateway(const std::string& ipv6) {
    if (ipv6.empty())
        return "";
    const char* grep = isPlainOperand(ipv6) ? "grep " : "grep -F ";
    return captureValue("netstat -rn -6 | " + (grep + shellOperand(ipv6)) + " | awk '{print $2}'",
                        LABEL);
}

std::string getFQDN() {
    std::string name;
    if (!captureLine("hostname", FQDN_LABEL, name))
        printErrLog(FQDN_LABEL, "command not found");
    dropNewline(name);
    return name;
}

std::string getDNS(const std::string& iface) {
    // Not in backquotes: they would end at one in the name, however that is quoted.
    return captureJoined("status=$(" + statusPipeline(iface) +
                             "); if [ \"$status\" = active ]; then cat /etc/resolv.conf | grep "
                             "nameserver | awk '{print $2}'; fi",
                         LABEL, ",");
}

std::string getDescription(const std::string& iface) {
    bool started = false;
    std::string description = captureJoined(
        "pciconf -lv " + shellOperand(iface) +
            " | egrep -i 'vendor|device' | cut -d'=' -f2 | sed -e 's/ *//' | awk 1 ORS=' ' | "
            "sed -e 's/^[ \t]*//;s/[ \t]*$//' | sed -e \"s/'//g\"",
        DESCRIPTION_LABEL, "", &started);
    if (!started)
        printErrLog(DESCRIPTION_LABEL, "command not found");
    return description;
}

std::string getMediaStatus(const std::string& iface) {
    return captureValue(statusPipeline(iface), LABEL);
}
