#include "storage/smart_health.h"

#include "tools/ask.h"

#include <map>

namespace {

// What a drive's answers have told so far.
struct told_before {
    bool recognised = false;
    bool health = false;
    std::string serial = {};
};
std::map<std::string, told_before> remembered; // by subject

} // namespace

smart_reply askSmart(const command_line& words, const std::string& subject, const char* label,
                     bool drop_warning) {
    question asked{words, label, subject};
    asked.status_counts = false;
    const reply& answer = ask(asked);
    smart_reply result;
    if (answer.end == program_end::exited)
        result.facts = parseSmartctl(answer.text, drop_warning);

    const smart_facts& facts = result.facts;
    told_before& before = remembered[subject];
    if (!facts.serial.empty() && facts.serial != before.serial)
        before = {false, false, facts.serial}; // another drive
    if (!answer.known || (before.recognised && !facts.recognised)) {
        result.facts = {};
        return result;
    }
    // Exit status bits 0 and 1: the question was not understood, or the drive could not be opened.
    // A verdict that was printed to its end counts all the same.
    const bool opened =
        (answer.exit_status & 3) == 0 || facts.unknown_usb_bridge || facts.health_whole;
    if (!opened)
        result.facts.health.clear();
    result.known = answer.end == program_end::missing ||
                   (opened && facts.recognised && (!facts.health.empty() || !before.health));
    before.recognised = facts.recognised;
    before.health = before.health || !facts.health.empty();
    return result;
}

void forgetSmart(const std::string& subject) {
    remembered.erase(subject);
}

std::string smartHealth(const smart_facts& facts, bool ok_may_go_on) {
    const std::string& said = facts.health;
    if (said == "PASSED" || said == "OK")
        return "OK";
    if (said.find("PASSED") != said.npos || (ok_may_go_on && said.find("OK") != said.npos))
        return "PredictiveFailureAnalysis";
    return said.empty() ? "N/A" : "Fail";
}
