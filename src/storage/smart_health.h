// What smartctl says of a drive, asked and judged.
#pragma once

#include "tools/smartctl.h"

#include <string>

// A drive's facts, and how far they may be believed.
struct smart_reply {
    smart_facts facts;
    // False when nothing follows: the program did not answer, or with what is no answer of its own,
    // or could not open the drive, or said no word on the health where it had told it before. The
    // health in a record then is "N/A" and no news.
    bool known = false;
};

// Asks smartctl once; `subject` is the drive, which is left alone for a while when the program
// hangs.
smart_reply askSmart(const command_line& words, const std::string& subject, const char* label,
                     bool drop_warning = false);

// The drive is gone: another one may answer under its name.
void forgetSmart(const std::string& subject);

// "OK", "PredictiveFailureAnalysis", "N/A" or "Fail". A health text that goes on after "PASSED", or
// with `ok_may_go_on` after "OK", is a predicted failure.
std::string smartHealth(const smart_facts& facts, bool ok_may_go_on);
