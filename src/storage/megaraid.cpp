#include "storage/megaraid.h"

void collectMegaraid(storage_items& /*items*/, const char* /*label*/) {}

void collectLsi(storage_items& /*items*/, const char* /*label*/) {}
