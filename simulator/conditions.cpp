#include "conditions.h"

#include "records.h"
#include "show.h"

namespace bmcsim {

const char* conditionUsage() {
    return "    raw SELECTOR TEXT      a last value of the selector contains TEXT (escaped form)\n"
           "    equals SELECTOR TEXT   a last value of the selector is TEXT\n"
           "    selector SELECTOR count N  the list is complete and has N items\n"
           "    uploads SELECTOR N     at least N values came since the BMC's start\n"
           "    next SELECTOR [N]      N (1) further values come from now on\n"
           "    sel TEXT | sel count N a line of the event log contains TEXT; N lines or more\n"
           "    show SECTION TEXT      a line of the section contains TEXT\n"
           "    requests NN/CC N       at least N requests of NetFn NN, command CC\n"
           "    released N             at least N posted commands were released\n"
           "    complaints N | clients N | bad N   at least so many (clients: exactly)\n"
           "    quiet MS               no request for so long\n";
}

// The arguments of a condition: words, and the text from the n-th word on.
struct Arguments {
    std::vector<std::string> words;
    std::string text; // whole

    std::string from(size_t word) const {
        std::string rest = text;
        for (size_t i = 0; i < word; i++) {
            rest.erase(0, rest.find_first_not_of(' '));
            rest.erase(0, std::min(rest.find(' '), rest.size()));
        }
        rest.erase(0, std::min(rest.find_first_not_of(' '), rest.size()));
        return rest;
    }
    bool number(size_t word, int64_t high, int64_t& out) const {
        return word < words.size() && parseNumber(words[word], 0, high, out);
    }
    bool selector(size_t word, uint8_t& out) const {
        int64_t value = 0;
        if (!number(word, 255, value))
            return false;
        out = static_cast<uint8_t>(value);
        return true;
    }
};

constexpr int64_t MAX_COUNT = 1000000000;

static bool anyContains(const Lines& lines, const std::string& text) {
    for (const std::string& line : lines)
        if (line.find(text) != std::string::npos)
            return true;
    return false;
}

static bool rawCondition(const Arguments& arguments, Condition& condition) {
    uint8_t selector = 0;
    const std::string text = arguments.from(2);
    if (!arguments.selector(1, selector) || text.empty())
        return false;
    condition = [=](Bmc& bmc) { return anyContains(rawValues(bmc, selector), text); };
    return true;
}

static bool equalsCondition(const Arguments& arguments, Condition& condition) {
    uint8_t selector = 0;
    if (!arguments.selector(1, selector))
        return false;
    condition = [selector, text = arguments.from(2)](Bmc& bmc) {
        for (const std::string& line : rawValues(bmc, selector))
            if (line == text)
                return true;
        return false;
    };
    return true;
}

static bool listCondition(const Arguments& arguments, Condition& condition) {
    uint8_t selector = 0;
    int64_t count = 0;
    if (!arguments.selector(1, selector) || countOfList(selector) == 0 ||
        arguments.words.size() != 4 || arguments.words[2] != "count" ||
        !arguments.number(3, MAX_COUNT, count))
        return false;
    condition = [=](Bmc& bmc) {
        const auto found = bmc.parameters.lists.find(selector);
        const auto wanted = static_cast<size_t>(count);
        return found == bmc.parameters.lists.end()
                   ? wanted == 0
                   : found->second.announced == wanted && found->second.items.size() == wanted;
    };
    return true;
}

static size_t uploadsOf(const Bmc& bmc, uint8_t selector) {
    const auto found = bmc.parameters.values.find(selector);
    return found == bmc.parameters.values.end() ? 0 : found->second.uploads;
}

static bool uploadsCondition(const Arguments& arguments, Condition& condition) {
    uint8_t selector = 0;
    int64_t count = 0;
    if (!arguments.selector(1, selector) || !arguments.number(2, MAX_COUNT, count))
        return false;
    condition = [=](Bmc& bmc) { return uploadsOf(bmc, selector) >= static_cast<size_t>(count); };
    return true;
}

static bool nextCondition(const Bmc& bmc, const Arguments& arguments, Condition& condition) {
    uint8_t selector = 0;
    int64_t count = 1;
    if (!arguments.selector(1, selector) ||
        (arguments.words.size() > 2 && !arguments.number(2, MAX_COUNT, count)))
        return false;
    const size_t before = uploadsOf(bmc, selector);
    const uint64_t generation = bmc.generation; // a restart counts from 0 again
    condition = [=](Bmc& now) {
        const size_t base = now.generation == generation ? before : 0;
        return uploadsOf(now, selector) >= base + static_cast<size_t>(count);
    };
    return true;
}

static bool selCondition(const Arguments& arguments, Condition& condition) {
    int64_t count = 0;
    const std::string text = arguments.from(1);
    if (arguments.words.size() == 3 && arguments.words[1] == "count") {
        if (!arguments.number(2, MAX_COUNT, count))
            return false;
        condition = [=](Bmc& bmc) { return bmc.sel.records.size() >= static_cast<size_t>(count); };
        return true;
    }
    condition = [=](Bmc& bmc) { return anyContains(selLines(bmc), text); };
    return !text.empty();
}

static bool showCondition(Bmc& bmc, const Arguments& arguments, Condition& condition) {
    if (arguments.words.size() < 3)
        return false;
    bool known = false;
    const std::string section = arguments.words[1];
    showSection(bmc, section, known);
    condition = [section, text = arguments.from(2)](Bmc& now) {
        bool ignored = false;
        return anyContains(showSection(now, section, ignored), text);
    };
    return known;
}

static bool requestsCondition(const Arguments& arguments, Condition& condition) {
    Target target;
    int64_t count = 0;
    if (arguments.words.size() != 3 || !parseTarget(arguments.words[1], target) ||
        !arguments.number(2, MAX_COUNT, count))
        return false;
    condition = [=](Bmc& bmc) {
        size_t requests = 0;
        for (const auto& [key, traffic] : bmc.traffic)
            if ((target.netFn < 0 || key.netFn == target.netFn) &&
                (target.cmd < 0 || key.cmd == target.cmd) &&
                (target.first < 0 || key.selector == target.first))
                requests += traffic.requests;
        return requests >= static_cast<size_t>(count);
    };
    return true;
}

// Conditions of one number.
static bool numberCondition(const Arguments& arguments, Condition& condition) {
    int64_t number = 0;
    if (arguments.words.size() != 2 || !arguments.number(1, MAX_COUNT, number))
        return false;
    const auto count = static_cast<size_t>(number);
    const std::string& name = arguments.words[0];
    if (name == "released")
        condition = [=](Bmc& bmc) { return bmc.slot.released >= count; };
    else if (name == "complaints")
        condition = [=](Bmc& bmc) { return bmc.ledger.complaintCount >= count; };
    else if (name == "clients")
        condition = [=](Bmc& bmc) { return bmc.clients == count; };
    else if (name == "bad")
        condition = [=](Bmc& bmc) { return bmc.badFrames >= count; };
    else if (name == "quiet")
        condition = [=](Bmc& bmc) { return bmc.ledger.nowMs - bmc.lastRequestMs >= number; };
    else
        return false;
    return true;
}

static bool readCondition(Bmc& bmc, const Arguments& arguments, Condition& condition) {
    const std::string& name = arguments.words[0];
    if (name == "raw")
        return rawCondition(arguments, condition);
    if (name == "equals")
        return equalsCondition(arguments, condition);
    if (name == "selector")
        return listCondition(arguments, condition);
    if (name == "uploads")
        return uploadsCondition(arguments, condition);
    if (name == "next")
        return nextCondition(bmc, arguments, condition);
    if (name == "sel")
        return selCondition(arguments, condition);
    if (name == "show")
        return showCondition(bmc, arguments, condition);
    if (name == "requests")
        return requestsCondition(arguments, condition);
    return numberCondition(arguments, condition);
}

std::string parseCondition(Bmc& bmc, const std::string& rest, Condition& condition) {
    Arguments arguments{words(rest), rest};
    const bool negated = !arguments.words.empty() && arguments.words[0] == "not";
    if (negated) {
        arguments.text = arguments.from(1);
        arguments.words.erase(arguments.words.begin());
    }
    if (arguments.words.empty() || !readCondition(bmc, arguments, condition))
        return "no such condition: " + rest;
    if (negated)
        condition = [holds = condition](Bmc& now) { return !holds(now); };
    return "";
}

} // namespace bmcsim
