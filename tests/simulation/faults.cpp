// What goes wrong, by chance.
#include "play.h"

#include <algorithm>

namespace sim {

namespace {

// A program, or one of its command lines.
std::string anyCommand(const World& world, Dice& dice) {
    const char* const lines[] = {"ifconfig",     "netstat",        "pciconf",
                                 "geom",         "camcontrol",     "smartctl",
                                 "fdisk",        "gpart",          "df",
                                 "swapinfo",     "newfs",          "lspci",
                                 "graid",        "storcli",        "sas3ircu",
                                 "uname",        "netstat -rn -6", "ifconfig -a",
                                 "graid list",   "geom disk list", "sas3ircu list",
                                 "storcli show", "uname -r -p",    "camcontrol devlist"};
    if (!world.controllers.empty() && dice.percent(40)) {
        const Controller& one = dice.of(world.controllers);
        const char* const forms[] = {"storcli /c%d show", "storcli /c%d/vall show all",
                                     "storcli /c%d/eall/sall show all",
                                     "storcli /c%d /eall /sall show"};
        return format(one.isSas() ? "sas3ircu %d display" : dice.of(forms), one.number);
    }
    if (!world.disks.empty() && dice.percent(50)) {
        const char* const forms[] = {"smartctl -i -H -A /dev/%s", "camcontrol identify %s",
                                     "fdisk %s"};
        return format(dice.of(forms), dice.of(world.disks).name.c_str());
    }
    return dice.of(lines);
}

void aimAtBmc(Fault& fault, Dice& dice) {
    const int commands[] = {-1, 0x0402, 0x0402, 0x0658, 0x0A48};
    const int codes[] = {0xC0, 0xC1, 0xC3, 0xC7, 0xCB, 0xD5, 0xFF, 0x80, 0x81};
    fault.command = dice.of(commands);
    fault.first = dice.percent(40) ? 0 : dice.below(80);
    fault.count = dice.percent(60) ? 1 : dice.between(2, 60);
    fault.number = fault.what == Trouble::bmc_code    ? dice.of(codes)
                   : fault.what == Trouble::bmc_short ? dice.below(4)
                                                      : dice.between(20, 200);
}

} // namespace

Fault makeFault(const World& world, Dice& dice) {
    Fault fault{};
    const int kind = dice.below(100);
    if (kind < 60) {
        fault.what = static_cast<Trouble>(dice.below(8));
        if (!dice.percent(6))
            fault.target = anyCommand(world, dice);
        if (fault.what == Trouble::missing)
            fault.target.erase(std::min(fault.target.find(' '), fault.target.size()));
    } else if (kind < 65) {
        fault.what = dice.percent(50) ? Trouble::file : Trouble::folders;
        fault.target = dice.of(std::array{"", "/etc/resolv.conf", "/opt/norvik/vyn.ini"});
    } else if (kind < 80) {
        fault.what = static_cast<Trouble>(dice.between(static_cast<int>(Trouble::row_gone),
                                                       static_cast<int>(Trouble::nvme_status)));
        fault.number = fault.what >= Trouble::nvme_open ? dice.below(12) : dice.of(world.nics).row;
    } else {
        fault.what = static_cast<Trouble>(
            dice.between(static_cast<int>(Trouble::bmc_code), static_cast<int>(Trouble::bmc_gone)));
        aimAtBmc(fault, dice);
    }
    return fault;
}

std::string faultText(const Fault& fault) {
    std::string text = TROUBLE_NAMES[static_cast<int>(fault.what)];
    if (fault.what >= Trouble::bmc_code)
        text += format(" %02X, command %04X, %d requests from %d on", fault.number,
                       fault.command & 0xFFFF, fault.count, fault.first);
    else if (fault.what >= Trouble::row_gone)
        text += format(" %d", fault.number);
    else
        text += fault.target.empty() ? " (all)" : " (" + fault.target + ")";
    return text + format(" until pass %d", fault.until);
}

} // namespace sim
