// The start-time file, which carries the service's start time to later command-line processes:
// the raw bytes as a text line, then four "%2x" numbers.
#pragma once

// Reads the BMC's clock into mTimeStamp and rewrites the file.
void setStartTime();

// Reads the first line back into mTimeStamp, at most four characters; a missing file leaves it.
void getStartTime();
