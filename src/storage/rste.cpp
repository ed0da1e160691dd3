#include "storage/rste.h"

void collectRste(storage_items& /*items*/, const char* /*label*/) {}
