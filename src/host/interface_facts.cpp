#include "host/interface_facts.h"

#include "host/media_speed.h"
#include "tools/ask.h"
#include "tools/ifconfig.h"

#include <algorithm>
#include <map>

namespace {

std::map<std::string, interface_facts> known;
std::set<std::string> listed;

using told_interfaces = std::map<std::string, ifconfig_interface>;

// Empty when the answer says nothing: a host without any interface has none to tell of either.
told_interfaces askIfconfig() {
    const reply& answer = ask({ifconfigCommand(), "Lan ->"});
    return answer.known ? parseIfconfig(answer.text) : told_interfaces();
}

void update(const interface_row& row, const told_interfaces& told) {
    const auto found = told.find(row.name);
    if (found != told.end()) {
        const ifconfig_interface& interface = found->second;
        const bool active = interface.status == "active";
        known[row.name] = {interface.inet6, linkSpeed(interface.media), active, active && row.up,
                           false};
        return;
    }
    interface_facts& last = known[row.name];
    last.link_unsure = row.up;
    last.link_up = last.link_up && row.up; // that much the kernel tells
}

// Forgets the interfaces that have gone.
void forgetOthers(const std::vector<interface_row>& rows, const told_interfaces& told) {
    for (auto each = known.begin(); each != known.end();) {
        const bool there = told.count(each->first) != 0 ||
                           std::any_of(rows.begin(), rows.end(), [&](const interface_row& row) {
                               return row.name == each->first;
                           });
        each = there ? std::next(each) : known.erase(each);
    }
}

} // namespace

void askInterfaces(const std::vector<interface_row>& rows) {
    const told_interfaces told = askIfconfig();
    for (const interface_row& row : rows)
        update(row, told);
    if (told.empty())
        return;
    forgetOthers(rows, told);
    listed.clear();
    for (const auto& [name, interface] : told)
        listed.insert(name);
}

const std::set<std::string>& listedInterfaces() {
    return listed;
}

const interface_facts& factsOf(const std::string& name) {
    static const interface_facts none;
    const auto found = known.find(name);
    return found == known.end() ? none : found->second;
}
